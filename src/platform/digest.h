// A fingerprint of bytes that any machine's own tools can check.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// SHA-256 (FIPS 180-4) in 64 lower-case hexadecimal digits, as sha256sum prints it.
std::string Sha256Of(std::string_view bytes);

}  // namespace kelvo
