#include "tools/zeb/Arguments.h"

#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Moments.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyValues.h"
#include "tools/zeb/LoadValues.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace zeb::tools
{
namespace
{

bool IsNumberType(ULONG type)
{
    return type == PT_I2 || type == PT_LONG || type == PT_I8 || type == PT_CURRENCY || type == PT_R4 ||
           type == PT_DOUBLE || type == PT_APPTIME || type == PT_BOOLEAN;
}

/// "0x10" as a number; false for anything else.
bool HexNumber(const std::string& text, FileJson& number)
{
    if (text.size() < 3 || text.size() > 18 || text.compare(0, 2, "0x") != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF", 2) != std::string::npos)
    {
        return false;
    }
    const uint64_t value = std::stoull(text.substr(2), nullptr, 16);
    number = static_cast<int64_t>(value);
    return true;
}

FileJson ValueOf(ULONG type, const std::string& text)
{
    if (type == PT_STRING8 || type == PT_UNICODE || !(IsNumberType(type) || (type & MV_FLAG)))
    {
        return text;
    }
    FileJson number;
    if ((type == PT_I2 || type == PT_LONG || type == PT_I8 || type == PT_CURRENCY) && HexNumber(text, number))
    {
        return number;
    }
    FileJson parsed = FileJson::parse(text, nullptr, false);
    return parsed.is_discarded() ? FileJson(text) : parsed;
}

} // namespace

bool IsAssignment(const std::string& argument)
{
    const size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0)
    {
        return false;
    }
    if (argument.front() == '{')
    {
        return true;
    }
    for (size_t i = 0; i < equals; ++i)
    {
        if (!std::isalnum(static_cast<unsigned char>(argument[i])) && argument[i] != '_')
        {
            return false;
        }
    }
    return true;
}

Property ParseAssignment(const std::string& argument)
{
    const std::string text = ValidUtf8(argument);
    const size_t equals = text.find('=');
    try
    {
        if (equals == std::string::npos)
        {
            throw ToolError("\"" + text + "\" is not NAME=VALUE");
        }
        const std::string name = text.substr(0, equals);
        Property property = PropertyNamed(name);
        std::string value = text.substr(equals + 1);
        if (property.Type() == PT_SYSTIME && value.compare(0, 2, "0x") != 0)
        {
            value = TimeForMachines(ParseMoment(name, value, Zone::Local).time);
        }
        try
        {
            SetValues(property, ValueOf(property.Type(), value));
        }
        catch (const ToolError& error)
        {
            throw ToolError(name + " " + error.what());
        }
        return property;
    }
    catch (const ToolError& error)
    {
        throw UsageError(error.what());
    }
}

Property ParseRemoval(const std::string& name)
{
    try
    {
        Property property = PropertyNamed(ValidUtf8(name));
        property.removed = true;
        return property;
    }
    catch (const ToolError& error)
    {
        throw UsageError(error.what());
    }
}

LONG ParseSize(const std::string& what, const std::string& text)
{
    constexpr uint64_t Largest = 0x7FFFFFFF;
    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string unit = text.substr(digits);
    uint64_t factor = 1;
    bool known = unit.empty();
    for (const char* name : {"kK", "mM", "gG"})
    {
        factor = known ? factor : factor * 1024;
        known = known || (unit.size() == 1 && (unit[0] == name[0] || unit[0] == name[1]));
    }
    if (!known || digits == 0 || digits > 10 || std::stoull(text.substr(0, digits)) * factor > Largest)
    {
        throw UsageError(what + " needs a number of bytes such as 1500, 10k or 2M, not '" +
                         Shortened(OneLine(ValidUtf8(text)), 40) + "'");
    }
    return static_cast<LONG>(std::stoull(text.substr(0, digits)) * factor);
}

void Confirm(const std::string& what, bool yes)
{
    if (yes)
    {
        return;
    }
    if (!platform::InputIsTerminal() || !platform::IsTerminal(platform::OutputStream::Error))
    {
        throw UsageError("no terminal for the question: to " + what + " give --yes");
    }
    std::fprintf(stderr, "Really %s? [y/N] ", what.c_str());
    std::fflush(stderr);
    char answer[16] = "";
    if ((std::fgets(answer, sizeof answer, stdin) == nullptr) || (answer[0] != 'y' && answer[0] != 'Y'))
    {
        throw ToolError("cancelled: nothing was changed");
    }
}

} // namespace zeb::tools
