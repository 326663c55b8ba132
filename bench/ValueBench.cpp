// value-read: typed reads and UseDefault against one virtual call per value with the same checks inline.
#include "bench/Benches.h"
#include "zebapi/ZebAPI.h"

#include <stdexcept>

namespace bench
{

namespace
{

/// A hand-written reader: one virtual call, checks inline.
class Reader
{
public:
    virtual ~Reader() = default;
    virtual LONG Long(const SPropValue* value) const = 0;
    virtual LONG LongOr(const SPropValue* value, LONG otherwise) const = 0;
    virtual const char* Text(const SPropValue* value) const = 0;
    virtual bool Flag(const SPropValue* value) const = 0;
};

void Require(const SPropValue* value, ULONG type)
{
    if (value == nullptr)
    {
        throw std::invalid_argument("no value");
    }
    if (PROP_TYPE(value->ulPropTag) != type)
    {
        throw std::invalid_argument("other type");
    }
}

class CheckedReader : public Reader
{
public:
    LONG Long(const SPropValue* value) const override
    {
        Require(value, PT_LONG);
        return value->Value.l;
    }
    LONG LongOr(const SPropValue* value, LONG otherwise) const override
    {
        if (PROP_TYPE(value->ulPropTag) == PT_ERROR)
        {
            return otherwise;
        }
        Require(value, PT_LONG);
        return value->Value.l;
    }
    const char* Text(const SPropValue* value) const override
    {
        Require(value, PT_STRING8);
        return value->Value.lpszA;
    }
    bool Flag(const SPropValue* value) const override
    {
        Require(value, PT_BOOLEAN);
        return value->Value.b != 0;
    }
};

/// Rows of four values: a number, a missing number, a text, a flag.
std::vector<SPropValue> MakeValues(size_t rows)
{
    static char text[] = "subject";
    std::vector<SPropValue> values(rows * 4);
    for (size_t i = 0; i < values.size(); i += 4)
    {
        values[i].ulPropTag = PR_MESSAGE_SIZE;
        values[i].Value.l = static_cast<LONG>(i);
        values[i + 1].ulPropTag = i % 8 == 0 ? CHANGE_PROP_TYPE(PR_IMPORTANCE, PT_ERROR) : PR_IMPORTANCE;
        values[i + 1].Value.l = 1;
        values[i + 2].ulPropTag = PR_SUBJECT_A;
        values[i + 2].Value.lpszA = text;
        values[i + 3].ulPropTag = PR_HASATTACH;
        values[i + 3].Value.b = i % 3 == 0;
    }
    return values;
}

} // namespace

Measurement ValueRead(const Options& options)
{
    const size_t rows = options.brief ? 1000 : 1000000;
    auto values = std::make_shared<std::vector<SPropValue>>(MakeValues(rows));
    const auto ours = [values]
    {
        return FastestSeconds(5, [&]
        {
            unsigned long long sum = 0;
            for (size_t i = 0; i < values->size(); i += 4)
            {
                SPropValue* row = &(*values)[i];
                CZebOnePropVal size(row, nullptr), importance(row + 1, nullptr), subject(row + 2, nullptr),
                    flag(row + 3, nullptr);
                sum += static_cast<ULONG>(static_cast<LONG>(size));
                sum += static_cast<ULONG>(importance.UseDefault(static_cast<LONG>(5)));
                sum += static_cast<unsigned char>(*static_cast<const char*>(subject));
                sum += static_cast<bool>(flag) ? 1u : 0u;
            }
            Keep(sum);
        });
    };
    const auto baseline = [values]
    {
        // Chosen at run time, so that the calls stay virtual.
        static const CheckedReader checked;
        const Reader* volatile chosen = &checked;
        const Reader& reader = *chosen;
        return FastestSeconds(5, [&]
        {
            unsigned long long sum = 0;
            for (size_t i = 0; i < values->size(); i += 4)
            {
                const SPropValue* row = &(*values)[i];
                sum += static_cast<ULONG>(reader.Long(row));
                sum += static_cast<ULONG>(reader.LongOr(row + 1, 5));
                sum += static_cast<unsigned char>(*reader.Text(row + 2));
                sum += reader.Flag(row + 3) ? 1u : 0u;
            }
            Keep(sum);
        });
    };
    return {"value-read", 1.3, ours, baseline, options.brief ? 3 : 11};
}

} // namespace bench
