// The messages of an mbox file.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

namespace zeb::tools
{

/// Whether a line separates messages: "From ", an address, a date.
bool IsSeparator(const std::string& line);

struct MboxMessage
{
    uint64_t number = 0; ///< from 1
    uint64_t offset = 0; ///< offset of its separator in the file
    std::string bytes;   ///< without the separator and the quoting of "From " in the text
};

/// Reads an mbox file sequentially, one message at a time. A message ends before a separator that follows an empty
/// line, or after its Content-Length, if a separator or the end of the file is exactly there. Lines of the text that
/// begin with ">From ", ">>From " and so on lose one ">".
class MboxReader
{
public:
    /// @throws ToolError naming the file when it cannot be read or is not an mbox file
    explicit MboxReader(const std::string& file);

    /// @return false at the end of the file @throws ToolError when the file cannot be read
    bool Next(MboxMessage& message);

private:
    bool ReadLine(std::string& line);
    void SkipToFirst();
    void ReadHeaders(MboxMessage& message);
    void ReadBody(MboxMessage& message);
    bool ReadCountedBody(MboxMessage& message);
    bool EndsAt(uint64_t offset);

    const std::string m_file;
    std::ifstream m_stream;
    uint64_t m_offset = 0, m_size = 0;
    std::optional<uint64_t> m_separator; ///< the offset of the separator before the next message
    std::string m_firstOfBody;           ///< a line that was read with the headers but is not a header
    uint64_t m_number = 0;
};

} // namespace zeb::tools
