#include "platform/codepage.h"

#include <cerrno>
#include <iconv.h>

namespace zeb::platform
{
namespace
{

constexpr const char* Replacement = "\xEF\xBF\xBD";

/// What iconv calls a code page of Windows.
std::string CharacterSet(unsigned codePage)
{
    switch (codePage)
    {
    case 936:
        return "GBK";
    case 949:
        return "UHC";
    case 950:
        return "BIG5";
    case 1200:
        return "UTF-16LE";
    case 1201:
        return "UTF-16BE";
    case 20127:
        return "ASCII";
    case 20866:
        return "KOI8-R";
    case 21866:
        return "KOI8-U";
    case 50220:
    case 50221:
    case 50222:
        return "ISO-2022-JP";
    case 50225:
        return "ISO-2022-KR";
    case 51932:
        return "EUC-JP";
    case 51936:
        return "GB2312";
    case 51949:
        return "EUC-KR";
    case 54936:
        return "GB18030";
    case 65000:
        return "UTF-7";
    case 65001:
        return "UTF-8";
    default:
        break;
    }
    const bool isLatin = codePage >= 28591 && codePage <= 28606;
    return isLatin ? "ISO-8859-" + std::to_string(codePage - 28590) : "CP" + std::to_string(codePage);
}

class Decoder
{
public:
    explicit Decoder(unsigned codePage)
        : m_iconv(iconv_open("UTF-8", CharacterSet(codePage).c_str()))
    {
    }
    ~Decoder()
    {
        if (IsKnown())
        {
            iconv_close(m_iconv);
        }
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool IsKnown() const { return m_iconv != reinterpret_cast<iconv_t>(-1); }

    std::string Decode(const std::string& bytes) const
    {
        std::string utf8;
        char* in = const_cast<char*>(bytes.data()); // iconv's declaration; it only reads
        size_t left = bytes.size();
        while (left > 0)
        {
            char piece[4096];
            char* out = piece;
            size_t room = sizeof piece;
            const size_t code = iconv(m_iconv, &in, &left, &out, &room);
            const bool isStopped = code == static_cast<size_t>(-1) && errno != E2BIG;
            utf8.append(piece, static_cast<size_t>(out - piece));
            if (isStopped)
            {
                utf8 += Replacement;
                ++in;
                --left;
            }
        }
        return utf8;
    }

private:
    const iconv_t m_iconv;
};

} // namespace

bool Utf8FromCodePage(const std::string& bytes, unsigned codePage, std::string& utf8)
{
    const Decoder decoder(codePage);
    if (!decoder.IsKnown())
    {
        return false;
    }
    utf8 = decoder.Decode(bytes);
    return true;
}

} // namespace zeb::platform
