#pragma once

#include <string>
#include <string_view>

#include <QVariant>
#include <nlohmann/json.hpp>

namespace lumora::app {

// How stored settings keep their types in QSettings.
//
// A text store (INI) keeps only strings, so every value is written as its JSON text, with
// bytes as {"$data": "<base64>"} wherever they sit. Reading undoes exactly that: a boolean
// stays a boolean, an integer an integer, a double a double, bytes stay bytes. Text that is not
// JSON (an entry edited by hand) reads as that text, a plain string.
//
// A typed store (the macOS user defaults) keeps values as variants of the native types.

std::string encodeSettingText(const nlohmann::json& value);
nlohmann::json decodeSettingText(std::string_view text);

QVariant settingToVariant(const nlohmann::json& value);
// Types a JSON value cannot hold (dates, colours...) read as their string form, or null.
nlohmann::json settingFromVariant(const QVariant& value);

}  // namespace lumora::app
