#pragma once

// Pixels as a PNG file.

#include <cstdint>
#include <span>
#include <string>

namespace Vantrel::Pictures {

// A PNG file of 8 bits per channel without transparency. The pixels are 0xRRGGBB, row by row from the top; the upper
// byte is ignored. The same pixels give the same bytes with one version of zlib. EInvalidArgumentValue when the number
// of pixels is not that of the size, or the size is empty.
std::string EncodePNG(int pWidth, int pHeight, std::span<const uint32_t> pPixels);

}  // namespace Vantrel::Pictures
