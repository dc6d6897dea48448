#include "runtime/SettingsCodec.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <cstdint>
#include <limits>
#include <vector>

namespace lumora::app {

namespace {

using json = nlohmann::json;

// The one key of the object that stands for bytes in a text store.
const char* const kDataKey = "$data";

json bytesToTagged(const json::binary_t& bytes) {
    QByteArray raw(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<qsizetype>(bytes.size()));
    return json{{kDataKey, raw.toBase64().toStdString()}};
}

json tagBytes(const json& value) {
    if (value.is_binary()) return bytesToTagged(value.get_binary());
    if (value.is_array()) {
        json out = json::array();
        for (const auto& item : value)
            out.push_back(tagBytes(item));
        return out;
    }
    if (value.is_object()) {
        json out = json::object();
        for (const auto& [key, item] : value.items())
            out[key] = tagBytes(item);
        return out;
    }
    return value;
}

json untagBytes(const json& value) {
    // The parser reads every non-negative integer as unsigned; stored integers were signed.
    if (value.is_number_unsigned() &&
        value.get<std::uint64_t>() <=
            static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return json(value.get<std::int64_t>());
    }
    if (value.is_array()) {
        json out = json::array();
        for (const auto& item : value)
            out.push_back(untagBytes(item));
        return out;
    }
    if (!value.is_object()) return value;
    if (value.size() == 1 && value.contains(kDataKey) && value[kDataKey].is_string()) {
        const auto& text = value[kDataKey].get_ref<const std::string&>();
        auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromStdString(text),
                                                      QByteArray::AbortOnBase64DecodingErrors);
        if (decoded) {
            const QByteArray& bytes = *decoded;
            return json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
        }
        // Not base64 after all: an ordinary dictionary.
    }
    json out = json::object();
    for (const auto& [key, item] : value.items())
        out[key] = untagBytes(item);
    return out;
}

}  // namespace

std::string encodeSettingText(const json& value) {
    // Replacing invalid UTF-8 keeps one stray byte from losing the whole value.
    return tagBytes(value).dump(-1, ' ', false, json::error_handler_t::replace);
}

json decodeSettingText(std::string_view text) {
    json parsed = json::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
    if (parsed.is_discarded()) return json(std::string(text));
    return untagBytes(parsed);
}

QVariant settingToVariant(const json& value) {
    switch (value.type()) {
        case json::value_t::boolean:
            return QVariant(value.get<bool>());
        case json::value_t::number_integer:
            return QVariant(static_cast<qlonglong>(value.get<std::int64_t>()));
        case json::value_t::number_unsigned:
            return QVariant(static_cast<qulonglong>(value.get<std::uint64_t>()));
        case json::value_t::number_float:
            return QVariant(value.get<double>());
        case json::value_t::string:
            return QVariant(QString::fromStdString(value.get<std::string>()));
        case json::value_t::binary: {
            const auto& bytes = value.get_binary();
            return QVariant(QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                       static_cast<qsizetype>(bytes.size())));
        }
        case json::value_t::array: {
            QVariantList list;
            for (const auto& item : value)
                list.push_back(settingToVariant(item));
            return QVariant(list);
        }
        case json::value_t::object: {
            QVariantMap map;
            for (const auto& [key, item] : value.items()) {
                map.insert(QString::fromStdString(key), settingToVariant(item));
            }
            return QVariant(map);
        }
        case json::value_t::null:
        case json::value_t::discarded:
            break;
    }
    return {};
}

json settingFromVariant(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return value.toBool();
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::Short:
        case QMetaType::Long:
        case QMetaType::SChar:
            return static_cast<std::int64_t>(value.toLongLong());
        case QMetaType::UInt:
        case QMetaType::ULongLong:
        case QMetaType::UShort:
        case QMetaType::ULong:
        case QMetaType::UChar:
            return static_cast<std::uint64_t>(value.toULongLong());
        case QMetaType::Double:
        case QMetaType::Float:
            return value.toDouble();
        case QMetaType::QString:
            return value.toString().toStdString();
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            return json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
        }
        case QMetaType::QStringList:
        case QMetaType::QVariantList: {
            json out = json::array();
            for (const QVariant& item : value.toList())
                out.push_back(settingFromVariant(item));
            return out;
        }
        case QMetaType::QVariantMap: {
            json out = json::object();
            const QVariantMap map = value.toMap();
            for (auto it = map.begin(); it != map.end(); ++it) {
                out[it.key().toStdString()] = settingFromVariant(it.value());
            }
            return out;
        }
        default:
            break;
    }
    if (value.canConvert<QString>()) return value.toString().toStdString();
    return nullptr;
}

}  // namespace lumora::app
