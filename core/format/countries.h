// Codes of countries, as classification systems are named by.
#pragma once

#include <string_view>

namespace core {

/// Whether a text is a code of ISO 3166-1 (alpha-2) or of FIPS 10-4, or that of an alliance.
bool IsCountry(std::string_view code);

}  // namespace core
