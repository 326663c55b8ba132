#include "tools/zeb/Comparison.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyWriter.h"
#include "tools/zeb/Arguments.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zeb::tools
{
namespace
{

struct Operator
{
    const char* text;
    Comparison::Kind kind;
    ULONG relation;
};

/// Longer ones first, because they begin like others.
constexpr Operator Operators[] = {
    {"<=", Comparison::Kind::Compares, RELOP_LE}, {">=", Comparison::Kind::Compares, RELOP_GE},
    {"!=", Comparison::Kind::Compares, RELOP_NE}, {"<", Comparison::Kind::Compares, RELOP_LT},
    {">", Comparison::Kind::Compares, RELOP_GT},  {"=", Comparison::Kind::Compares, RELOP_EQ},
    {"~", Comparison::Kind::Contains, RELOP_EQ}};

std::string Trim(const std::string& text)
{
    const size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// "100k" as the number of bytes; other values unchanged.
std::string WithoutUnit(const std::string& name, const std::string& value)
{
    const bool hasUnit = value.size() > 1 && value.find_first_not_of("0123456789") == value.size() - 1 &&
                         std::string("kKmMgG").find(value.back()) != std::string::npos;
    return hasUnit ? std::to_string(ParseSize(name, value)) : value;
}

bool IsNumber(ULONG type)
{
    return type == PT_I2 || type == PT_LONG || type == PT_I8;
}

[[noreturn]] void Refuse(const std::string& text, const std::string& why)
{
    throw UsageError("--where '" + OneLine(text) + "': " + why);
}

Property PropertyOf(const std::string& name)
{
    Property property = ParseRemoval(name);
    property.removed = false;
    return property;
}

} // namespace

Comparison::Comparison(Property property, Kind kind, ULONG relation)
    : m_property(std::move(property))
    , m_kind(kind)
    , m_relation(relation)
{
}

void Comparison::Resolve(CZebIProp& object)
{
    if (!m_property.name)
    {
        return;
    }
    Properties properties = {m_property};
    NameResolver().Resolve(object, properties);
    m_property = properties.front();
}

void Comparison::Build(CZebRestriction& node) const
{
    if (m_kind == Kind::Exists)
    {
        return node.CreateExist(m_property.tag);
    }
    CZebPropValArray values;
    FillValues(values, {&m_property});
    if (m_kind == Kind::Compares)
    {
        node.CreateProp(m_property.tag, m_relation).Set(values[m_property.tag]);
        return;
    }
    const SPropValue* value = values;
    constexpr ULONG Fuzzy = FL_SUBSTRING | FL_IGNORECASE;
    if (m_property.Type() == PT_UNICODE)
    {
        node.CreateContentW(m_property.tag, value->Value.lpszW, Fuzzy);
    }
    else
    {
        node.CreateContentA(m_property.tag, value->Value.lpszA, Fuzzy);
    }
}

Comparison ParseComparison(const std::string& argument)
{
    const std::string text = ValidUtf8(argument);
    const size_t at = text.find_first_of("<>!=~");
    const std::string name = Trim(text.substr(0, at));
    if (at == std::string::npos)
    {
        return Comparison(PropertyOf(name), Comparison::Kind::Exists, 0);
    }
    const auto* found = std::find_if(std::begin(Operators), std::end(Operators), [&](const Operator& each)
    { return text.compare(at, std::strlen(each.text), each.text) == 0; });
    if (found == std::end(Operators))
    {
        Refuse(text, "the operators are = != < <= > >= and ~");
    }
    const ULONG type = PropertyOf(name).Type();
    if ((type & MV_FLAG) != 0)
    {
        Refuse(text, "properties with several values cannot be compared");
    }
    if (found->kind == Comparison::Kind::Contains && type != PT_UNICODE && type != PT_STRING8)
    {
        Refuse(text, "only texts contain others");
    }
    std::string value = Trim(text.substr(at + std::strlen(found->text)));
    if (IsNumber(type))
    {
        value = WithoutUnit(name, value);
    }
    return Comparison(ParseAssignment(name + "=" + value), found->kind, found->relation);
}

} // namespace zeb::tools
