// Regular expressions over the texts of messages.
#pragma once

#include <memory>
#include <string>

namespace re2
{
class RE2;
}

namespace zeb::tools
{

/// A regular expression in RE2's syntax, whose time is linear in the text. Letter case is ignored unless the expression
/// begins with (?-i); ^ and $ match at each line.
class Pattern
{
public:
    /// @param option the option that it was given to, for messages @param text UTF-8
    /// @throws UsageError for an invalid expression
    Pattern(const std::string& option, const std::string& text);

    /// Whether it matches anywhere in a text. @param text UTF-8
    bool Matches(const std::string& text) const;

private:
    std::shared_ptr<const re2::RE2> m_expression;
};

} // namespace zeb::tools
