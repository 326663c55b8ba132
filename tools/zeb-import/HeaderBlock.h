// The headers of one message or part.
#pragma once

#include "tools/zeb-import/Mime.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb::tools
{

class HeaderBlock
{
public:
    enum class Kind
    {
        Other,
        Message, ///< an embedded message with its own headers follows
    };

    /// Adds a line, including the line end. @param begins whether a header begins with it
    void Add(const std::string& line, bool begins);
    bool IsEmpty() const { return m_headers.empty(); }

    /// Repairs the headers; call it once, after the last line. @param occurs whether a boundary occurs in the body
    Kind Mend(const std::function<bool(const std::string& boundary)>& occurs, Notes& notes);
    std::string Text() const;
    /// The boundary of a multipart, after Mend; empty for other types.
    const std::string& Boundary() const { return m_boundary; }

private:
    Kind MendType(std::string& header, const std::function<bool(const std::string&)>& occurs, Notes& notes);
    bool IsEncodedMessage() const;

    std::vector<std::string> m_headers;
    std::string m_boundary;
};

} // namespace zeb::tools
