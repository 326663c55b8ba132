#include "tools/zeb/Pattern.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <re2/re2.h>

namespace zeb::tools
{

Pattern::Pattern(const std::string& option, const std::string& text)
{
    re2::RE2::Options options(re2::RE2::Quiet);
    options.set_case_sensitive(false);
    m_expression = std::make_shared<const re2::RE2>("(?m)" + ValidUtf8(text), options);
    if (!m_expression->ok())
    {
        throw UsageError(option + " '" + Shortened(OneLine(ValidUtf8(text)), 60) +
                         "' is not a regular expression: " + m_expression->error());
    }
}

bool Pattern::Matches(const std::string& text) const
{
    return re2::RE2::PartialMatch(ValidUtf8(text), *m_expression);
}

} // namespace zeb::tools
