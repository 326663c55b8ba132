// Hexadecimal text: never writes or counts beyond its end, and round-trips.
#include "fuzz/Require.h"
#include "qorth/Hex.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const unsigned long count = String2BinBuffLen(text.c_str());
    Require(count <= size / 2, "at most one byte for two characters is counted");
    // Exactly as large as counted, so that the address sanitizer sees a byte too many.
    std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[count]);
    String2Bin(text.c_str(), bytes.get(), count);
    CStringA back;
    Bin2String(back, bytes.get(), count, 0);
    Require(static_cast<unsigned long>(back.GetLength()) == count * 2, "two digits per byte are written");
    std::string expected = text.substr(0, static_cast<size_t>(count) * 2);
    std::transform(expected.begin(), expected.end(), expected.begin(),
                   [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; });
    Require(expected == static_cast<const char*>(back), "the text that was read comes back in upper case");
    return 0;
}
