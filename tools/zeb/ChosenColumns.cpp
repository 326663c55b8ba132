#include "tools/zeb/ChosenColumns.h"

#include "platform/tags.h"
#include "tools/common/Color.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyWriter.h"
#include "tools/zeb/LoadValues.h"
#include "tools/zeb/PropertyTable.h"
#include "tools/zeb/SaveFormat.h"

#include <algorithm>
#include <iterator>

namespace zeb::tools
{
namespace
{

constexpr size_t WidestCell = 40;
constexpr const char* CellGap = "  ";

/// A column that is part of each MessageRow.
struct RowPart
{
    const char* name;
    std::string (*text)(const MessageRow& row, const FolderPath& path, Zone zone);
    Json (*value)(const MessageRow& row, const FolderPath& path);
    bool isDate, isNumber;
};

constexpr RowPart RowParts[] = {
    {"number", [](const MessageRow& row, const FolderPath&, Zone) { return std::to_string(row.number); },
     [](const MessageRow& row, const FolderPath&) { return Json(row.number); }, false, true},
    {"date", [](const MessageRow& row, const FolderPath&, Zone zone)
{ return row.hasDate ? TimeForPeople(row.date, zone) : std::string(); }, [](const MessageRow& row, const FolderPath&)
{ return TextOrNull(row.hasDate ? TimeForMachines(row.date) : ""); }, true, false},
    {"sender", [](const MessageRow& row, const FolderPath&, Zone) { return row.sender; },
     [](const MessageRow& row, const FolderPath&) { return Json(row.sender); }, false, false},
    {"size", [](const MessageRow& row, const FolderPath&, Zone)
{ return Grouped(static_cast<unsigned long long>(std::max<LONG>(row.size, 0))); },
     [](const MessageRow& row, const FolderPath&) { return Json(row.size); }, false, true},
    {"subject", [](const MessageRow& row, const FolderPath&, Zone) { return row.subject; },
     [](const MessageRow& row, const FolderPath&) { return Json(row.subject); }, false, false},
    {"unread", [](const MessageRow& row, const FolderPath&, Zone) { return std::string(row.unread ? "yes" : "no"); },
     [](const MessageRow& row, const FolderPath&) { return Json(row.unread); }, false, false},
    {"folder", [](const MessageRow&, const FolderPath& path, Zone) { return path.Text(); },
     [](const MessageRow&, const FolderPath& path) { return Json(path.Text()); }, false, false},
    {"id", [](const MessageRow& row, const FolderPath&, Zone) { return TextOfId(row); },
     [](const MessageRow& row, const FolderPath&) { return Json(TextOfId(row)); }, false, false},
};

/// A short name of a property.
struct ShortTag
{
    const char* name;
    ULONG tag;
};

constexpr ShortTag ShortTags[] = {
    {"received", PR_MESSAGE_DELIVERY_TIME},
    {"to", PR_DISPLAY_TO_W},
    {"cc", PR_DISPLAY_CC_W},
    {"class", PR_MESSAGE_CLASS_W},
    {"flag", PR_FLAG_STATUS},
    {"importance", PR_IMPORTANCE},
    {"attachments", PR_HASATTACH},
    {"modified", PR_LAST_MODIFICATION_TIME},
};

bool IsNumeric(ULONG type)
{
    return type == PT_I2 || type == PT_LONG || type == PT_I8 || type == PT_CURRENCY || type == PT_R4 ||
           type == PT_DOUBLE;
}

/// The property of a column's name. @throws UsageError
Property PropertyOfColumn(const std::string& name)
{
    const auto* known = std::find_if(std::begin(ShortTags), std::end(ShortTags),
                                     [&](const ShortTag& each) { return name == each.name; });
    if (known != std::end(ShortTags))
    {
        Property property;
        property.tag = known->tag;
        return property;
    }
    try
    {
        return PropertyNamed(ValidUtf8(name));
    }
    catch (const ToolError&)
    {
        throw UsageError("--columns has no column '" + Shortened(OneLine(ValidUtf8(name)), 60) + "'; there are " +
                         ChosenColumns::KnownNames() + ", and properties such as PR_SENSITIVITY");
    }
}

std::string JoinedCells(const std::vector<std::string>& cells, const std::vector<ChosenColumn>& columns,
                        const std::vector<size_t>& widths, size_t terminal)
{
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i)
    {
        const bool isLast = i + 1 == cells.size();
        line += i == 0 ? "" : CellGap;
        line += columns[i].isNumber ? RightAligned(cells[i], widths[i])
                : isLast            ? cells[i]
                                    : Fitted(cells[i], widths[i]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return Shortened(line, terminal) + "\n";
}

} // namespace

ChosenColumns::ChosenColumns(const std::string& list)
{
    for (size_t at = 0; at < list.size();)
    {
        const size_t end = std::min(list.find(',', at), list.size());
        const size_t begin = std::min(list.find_first_not_of(' ', at), end);
        Add(list.substr(begin, end - begin));
        at = end + 1;
    }
}

void ChosenColumns::Add(const std::string& name)
{
    ChosenColumn column;
    column.name = name;
    const auto* part =
        std::find_if(std::begin(RowParts), std::end(RowParts), [&](const RowPart& each) { return name == each.name; });
    if (part != std::end(RowParts))
    {
        column.text = part->text;
        column.value = part->value;
        column.isDate = part->isDate;
        column.isNumber = part->isNumber;
    }
    else
    {
        column.property = PropertyOfColumn(name);
        column.index = Tags().size();
        column.isDate = column.property.Type() == PT_SYSTIME;
        column.isNumber = IsNumeric(column.property.Type());
    }
    m_columns.push_back(std::move(column));
}

std::string ChosenColumns::KnownNames()
{
    std::string names;
    for (const RowPart& each : RowParts)
    {
        names += (names.empty() ? "" : ", ") + std::string(each.name);
    }
    for (const ShortTag& each : ShortTags)
    {
        names += ", " + std::string(each.name);
    }
    return names;
}

void ChosenColumns::Resolve(CZebIProp& object)
{
    NameResolver names;
    for (ChosenColumn& column : m_columns)
    {
        if (column.property.name)
        {
            Properties properties = {column.property};
            names.Resolve(object, properties);
            column.property = properties.front();
        }
    }
}

std::vector<ULONG> ChosenColumns::Tags() const
{
    std::vector<ULONG> tags;
    for (const ChosenColumn& column : m_columns)
    {
        if (column.text == nullptr)
        {
            tags.push_back(column.property.tag);
        }
    }
    return tags;
}

std::vector<std::string> ChosenColumns::Headings(Zone zone) const
{
    std::vector<std::string> cells;
    for (const ChosenColumn& column : m_columns)
    {
        cells.push_back(column.isDate ? column.name + " (" + NameOfZone(zone) + ")" : column.name);
    }
    return cells;
}

std::vector<std::string> ChosenColumns::Cells(const MessageRow& row, const FolderPath& path, Zone zone) const
{
    std::vector<std::string> cells;
    for (const ChosenColumn& column : m_columns)
    {
        std::string text;
        if (column.text != nullptr)
        {
            text = column.text(row, path, zone);
        }
        else if (const Property& property = row.more[column.index]; column.isDate && !property.values.empty())
        {
            text = TimeForPeople(NumberFromBytes<FILETIME>(property.values.front()), zone);
        }
        else
        {
            text = ShownValues(property, zone);
        }
        cells.push_back(OneLine(text));
    }
    return cells;
}

std::vector<std::string> ChosenColumns::Lines(const std::vector<MessageRow>& rows, const FolderPath& path, Zone zone,
                                              size_t terminal) const
{
    std::vector<std::vector<std::string>> table = {Headings(zone)};
    for (const MessageRow& row : rows)
    {
        table.push_back(Cells(row, path, zone));
    }
    std::vector<size_t> widths(m_columns.size());
    for (const std::vector<std::string>& cells : table)
    {
        for (size_t i = 0; i < cells.size(); ++i)
        {
            const size_t width = DisplayWidth(cells[i]);
            widths[i] = std::max(widths[i], terminal == 0 ? width : std::min(width, WidestCell));
        }
    }
    std::vector<std::string> lines;
    for (const std::vector<std::string>& cells : table)
    {
        const Tone tone = lines.empty() ? Tone::Heading : rows[lines.size() - 1].unread ? Tone::Unread : Tone::Plain;
        lines.push_back(Toned(tone, JoinedCells(cells, m_columns, widths, terminal)));
    }
    return lines;
}

Json ChosenColumns::RowForMachines(const MessageRow& row, const FolderPath& path) const
{
    Json object = Json::object();
    for (const ChosenColumn& column : m_columns)
    {
        if (column.value != nullptr)
        {
            object[column.name] = column.value(row, path);
            continue;
        }
        Property property = row.more[column.index];
        property.name = column.property.name;
        object[column.name] = property.values.empty() ? Json(nullptr) : Json(ValueInFile(property));
    }
    return object;
}

} // namespace zeb::tools
