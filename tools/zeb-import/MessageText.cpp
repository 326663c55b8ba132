#include "tools/zeb-import/MessageText.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/HeaderBlock.h"

#include <set>

namespace zeb::tools
{
namespace
{

bool IsContinuation(const std::string& line)
{
    return line[0] == ' ' || line[0] == '\t';
}

bool IsEnvelopeLine(const std::string& line)
{
    return line.compare(0, 5, "From ") == 0 || line.compare(0, 6, ">From ") == 0;
}

/// Scans the lines of a message, in and between the headers of all its parts.
class Mender
{
public:
    Mender(const std::string& bytes, Notes& notes)
        : m_bytes(bytes)
        , m_notes(notes)
    {
        m_out.reserve(bytes.size() + 64);
    }

    std::string Run()
    {
        while (m_at < m_bytes.size())
        {
            const size_t end = m_bytes.find('\n', m_at);
            const size_t next = end == std::string::npos ? m_bytes.size() : end + 1;
            if (m_inHeaders)
            {
                HeaderLine(m_bytes.substr(m_at, next - m_at), next);
            }
            else
            {
                BodyLine(m_at, next);
            }
            m_at = next;
        }
        if (m_inHeaders)
        {
            EndHeaders(m_bytes.size());
        }
        return std::move(m_out);
    }

private:
    enum class Boundary
    {
        None,
        Part,
        End,
    };

    Boundary BoundaryOf(size_t from, size_t to) const
    {
        if (m_boundaries.empty() || m_bytes.compare(from, 2, "--") != 0)
        {
            return Boundary::None;
        }
        const std::string line = m_bytes.substr(from, m_bytes.find_last_not_of(" \t\r\n", to - 1) + 1 - from);
        if (m_boundaries.count(line) != 0)
        {
            return Boundary::Part;
        }
        const bool isEnd = line.size() > 4 && line.compare(line.size() - 2, 2, "--") == 0 &&
                           m_boundaries.count(line.substr(0, line.size() - 2)) != 0;
        return isEnd ? Boundary::End : Boundary::None;
    }

    void HeaderLine(const std::string& line, size_t next)
    {
        if (IsBlank(line))
        {
            const bool inner = EndHeaders(next);
            m_out += line;
            m_inHeaders = inner;
            return;
        }
        if (BoundaryOf(m_at, next) != Boundary::None)
        {
            EndHeaders(m_at);
            m_inHeaders = false;
            BodyLine(m_at, next);
            return;
        }
        const bool first = m_block.IsEmpty();
        if (IsHeaderLine(line) || (IsContinuation(line) && !first))
        {
            m_block.Add(line, !IsContinuation(line));
            return;
        }
        if (first && IsEnvelopeLine(line))
        {
            return;
        }
        m_notes.Add("the empty line after the headers is missing");
        EndHeaders(m_at);
        m_out += "\n" + line;
        m_inHeaders = false;
    }

    /// @param body the offset of the body @return whether the headers of an embedded message follow
    bool EndHeaders(size_t body)
    {
        const HeaderBlock::Kind kind =
            m_block.Mend([&](const std::string& boundary) { return Occurs(boundary, body); }, m_notes);
        m_out += m_block.Text();
        if (!m_block.Boundary().empty())
        {
            m_boundaries.insert("--" + m_block.Boundary());
        }
        m_block = HeaderBlock();
        return kind == HeaderBlock::Kind::Message;
    }

    /// Whether a part with this boundary begins at or after `from`.
    bool Occurs(const std::string& boundary, size_t from) const
    {
        const std::string mark = "--" + boundary;
        for (size_t at = from; (at = m_bytes.find(mark, at)) != std::string::npos; at += mark.size())
        {
            if ((at == 0 || m_bytes[at - 1] == '\n') && m_bytes.compare(at + mark.size(), 2, "--") != 0)
            {
                return true;
            }
        }
        return false;
    }

    void BodyLine(size_t from, size_t to)
    {
        m_out.append(m_bytes, from, to - from);
        m_inHeaders = BoundaryOf(from, to) == Boundary::Part;
    }

    const std::string& m_bytes;
    Notes& m_notes;
    std::string m_out;
    HeaderBlock m_block;
    std::set<std::string> m_boundaries; ///< with the two hyphens before them
    size_t m_at = 0;
    bool m_inHeaders = true;
};

/// Converts UTF-16 with a byte order mark to UTF-8; other bytes are unchanged except for a removed UTF-8 mark.
void TakeByteOrderMark(std::string& bytes)
{
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
    {
        bytes.erase(0, 3);
    }
    const bool little = bytes.compare(0, 2, "\xFF\xFE") == 0, big = bytes.compare(0, 2, "\xFE\xFF") == 0;
    if (!little && !big)
    {
        return;
    }
    platform::WideString wide;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2)
    {
        const auto low = static_cast<unsigned char>(bytes[little ? i : i + 1]);
        const auto high = static_cast<unsigned char>(bytes[little ? i + 1 : i]);
        wide += static_cast<WCHAR>(low | high << 8);
    }
    bytes = platform::Utf8FromWide(wide.data(), wide.size());
}

/// Old Macintosh files have a single carriage return as line end.
void MendLineEnds(std::string& bytes)
{
    if (bytes.find('\n') == std::string::npos)
    {
        std::replace(bytes.begin(), bytes.end(), '\r', '\n');
    }
}

std::string FirstLine(const std::string& bytes)
{
    return bytes.substr(0, bytes.find('\n'));
}

void DropFirstLine(std::string& bytes)
{
    const size_t end = bytes.find('\n');
    bytes.erase(0, end == std::string::npos ? end : end + 1);
}

/// The headers as written, up to the empty line or the first line that is not a header.
std::string HeadersOf(const std::string& bytes)
{
    size_t at = 0;
    while (at < bytes.size())
    {
        const size_t end = bytes.find('\n', at);
        const std::string line = bytes.substr(at, end == std::string::npos ? end : end + 1 - at);
        if (IsBlank(line) || !(IsHeaderLine(line) || IsContinuation(line)))
        {
            break;
        }
        at += line.size();
    }
    return bytes.substr(0, at);
}

} // namespace

bool IsBlank(const std::string& line)
{
    return line == "\n" || line == "\r\n";
}

bool IsHeaderLine(const std::string& line)
{
    size_t colon = 0;
    while (colon < line.size() && line[colon] > ' ' && line[colon] < 0x7F && line[colon] != ':')
    {
        ++colon;
    }
    const size_t name = colon;
    while (colon < line.size() && (line[colon] == ' ' || line[colon] == '\t'))
    {
        ++colon;
    }
    return name > 0 && colon < line.size() && line[colon] == ':';
}

MessageText MendMessage(std::string bytes, Notes& notes)
{
    TakeByteOrderMark(bytes);
    MendLineEnds(bytes);
    while (!bytes.empty() && Trimmed(FirstLine(bytes)).empty())
    {
        DropFirstLine(bytes);
    }
    while (IsEnvelopeLine(bytes))
    {
        DropFirstLine(bytes);
    }
    if (!IsHeaderLine(FirstLine(bytes)))
    {
        throw ToolError("it is not a mail message");
    }
    MessageText result;
    result.headers = HeadersOf(bytes);
    result.text = Mender(bytes, notes).Run();
    return result;
}

} // namespace zeb::tools
