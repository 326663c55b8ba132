#include "tools/common/PropertyChange.h"

#include "tools/common/Failure.h"
#include "tools/common/PropertyReader.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

/// The current properties of `object` for the identifiers of `changes`; missing ones are marked as removed.
Properties Before(CZebIProp& object, const Properties& changes)
{
    PropertyReader reader(ReadWhat::Values);
    const Properties all = reader.ReadObject(object);
    Properties before;
    for (const Property& change : changes)
    {
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const Property& each) { return PROP_ID(each.tag) == PROP_ID(change.tag); });
        if (found != all.end())
        {
            before.push_back(*found);
            continue;
        }
        Property missing;
        missing.tag = change.tag;
        missing.removed = true;
        before.push_back(missing);
    }
    return before;
}

} // namespace

void RefuseProblems(const std::vector<Refusal>& refusals)
{
    if (refusals.empty())
    {
        return;
    }
    const Refusal& first = refusals.front();
    const char* name = NameOfResult(first.code);
    throw ToolError("the store refuses " + first.property + (name != nullptr ? " (" + std::string(name) + ")" : ""),
                    first.code);
}

void ChangeProperties(CZebIProp& object, Properties& properties, NameResolver& names)
{
    if (properties.empty())
    {
        return;
    }
    names.Resolve(object, properties);
    // Changes of a message are not stored until it is saved.
    const bool writesAtOnce = object.GetObjectType() != MAPI_MESSAGE;
    Properties before = writesAtOnce ? Before(object, properties) : Properties();
    try
    {
        RefuseProblems(WriteProperties(object, properties, names));
        object.SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE);
    }
    catch (...)
    {
        const ToolError failure = CurrentError();
        if (writesAtOnce)
        {
            WriteProperties(object, before, names);
        }
        throw failure;
    }
}

} // namespace zeb::tools
