#pragma once

#include <string>
#include <string_view>

namespace lumora {

// Lower-cases UTF-8 text for case-insensitive matching of display names, without a locale:
// ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic capitals map to their small letters
// (the scripts monitor names and Russian-speaking users' screen names come in). Other
// characters, and bytes that are not UTF-8, are kept as they are. A full Unicode case mapping
// would need the platform's tables, which the core does not have; these scripts cover the
// names users give and monitors report.
std::string foldCase(std::string_view text);

// Whether `haystack` contains `needle` ignoring case as foldCase does. An empty needle is
// contained nowhere (there is nothing to find).
bool containsIgnoringCase(std::string_view haystack, std::string_view needle);

}  // namespace lumora
