#include "zebstore/storage/TextGrams.h"

#include "platform/tags.h"
#include "zebstore/storage/Compare.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/Text.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr size_t Length = 3;
constexpr size_t FirstTable = 4096;
/// Bytes of a text that are indexed at most; a longer one has most sequences anyway.
constexpr std::uint64_t MostText = 4u << 20;
/// More than this many do not exclude many more messages.
constexpr size_t MostWanted = 24;

struct IndexedTag
{
    ULONG tag;
    TextField field;
};

constexpr IndexedTag OfMessage[] = {
    {PR_SUBJECT_W, TextField::Subject},
    {PR_SENDER_NAME_W, TextField::Sender},
    {PR_SENDER_EMAIL_ADDRESS_W, TextField::Sender},
    {PR_SENT_REPRESENTING_NAME_W, TextField::Sender},
    {PR_SENT_REPRESENTING_EMAIL_ADDRESS_W, TextField::Sender},
    {PR_BODY_W, TextField::Body},
};

constexpr IndexedTag OfRecipient[] = {
    {PR_DISPLAY_NAME_W, TextField::Recipient},
    {PR_EMAIL_ADDRESS_W, TextField::Recipient},
    {PR_SMTP_ADDRESS_W, TextField::Recipient},
};

template <size_t N>
std::optional<TextField> FieldIn(const IndexedTag (&tags)[N], ULONG tag)
{
    for (const IndexedTag& each : tags)
    {
        if (PROP_ID(each.tag) == PROP_ID(tag))
        {
            return each.field;
        }
    }
    return std::nullopt;
}

// Part of the file's format, as the folding is.
Gram GramOf(TextField field, const char32_t* text)
{
    std::uint64_t mixed = (std::uint64_t(text[0]) << 42) ^ (std::uint64_t(text[1]) << 21) ^ text[2];
    mixed += (static_cast<std::uint64_t>(field) + 1) * 0x9E3779B97F4A7C15u;
    mixed = (mixed ^ (mixed >> 32)) * 0xD6E8FEB86659FD93u;
    mixed = (mixed ^ (mixed >> 32)) * 0xD6E8FEB86659FD93u;
    const auto gram = static_cast<Gram>(mixed >> 32);
    return gram != 0 ? gram : 1;
}

// Bytes in the code page of the system that wrote them: another one may read another text.
bool ReadsDifferently(const EncodedValue& value, std::string_view stored)
{
    return value.large != nullptr && value.Type() == PT_STRING8 && !IsAscii(stored);
}

} // namespace

std::optional<TextField> TextFieldOf(ULONG tag)
{
    return FieldIn(OfMessage, tag);
}

std::optional<TextField> RecipientFieldOf(ULONG tag)
{
    return FieldIn(OfRecipient, tag);
}

std::vector<Gram> GramsWanted(TextField field, std::string_view stored)
{
    const std::u32string text = WidestFolded(stored);
    std::vector<Gram> grams;
    if (text.size() < Length)
    {
        return grams;
    }
    const size_t count = text.size() - Length + 1;
    const size_t step = (count + MostWanted - 1) / MostWanted;
    for (size_t at = 0; at < count; at += step)
    {
        grams.push_back(GramOf(field, &text[at]));
    }
    std::sort(grams.begin(), grams.end());
    grams.erase(std::unique(grams.begin(), grams.end()), grams.end());
    return grams;
}

GramSet::GramSet()
    : m_table(FirstTable, 0)
{
}

void GramSet::Clear()
{
    m_grams.clear();
    std::fill(m_table.begin(), m_table.end(), 0);
    m_isOpen = false;
}

void GramSet::Grow()
{
    std::vector<Gram> grams;
    grams.swap(m_grams);
    m_table.assign(m_table.size() * 4, 0);
    for (const Gram gram : grams)
    {
        Insert(gram);
    }
}

void GramSet::Insert(Gram gram)
{
    const size_t mask = m_table.size() - 1;
    size_t place = gram & mask;
    while (m_table[place] != 0 && m_table[place] != gram)
    {
        place = (place + 1) & mask;
    }
    if (m_table[place] == gram)
    {
        return;
    }
    m_table[place] = gram;
    m_grams.push_back(gram);
    if (m_grams.size() * 2 > m_table.size())
    {
        Grow();
    }
}

void GramSet::AddText(TextField field, std::string_view stored)
{
    if (stored.size() > MostText)
    {
        m_isOpen = true;
        return;
    }
    const std::u32string text = WidestFolded(stored);
    for (size_t at = 0; at + Length <= text.size(); ++at)
    {
        Insert(GramOf(field, &text[at]));
    }
}

void GramSet::AddValue(TextField field, const EncodedValue& value)
{
    const ULONG single = value.Type() & ~static_cast<ULONG>(MV_FLAG);
    if (!IsText(single))
    {
        return;
    }
    if (value.large != nullptr && value.large->Size() > 2 * MostText)
    {
        m_isOpen = true;
        return;
    }
    std::string room;
    const std::string_view bytes = BytesOf(value, room);
    if (single == value.Type())
    {
        const std::string_view stored = StoredTextOf(single, bytes);
        m_isOpen = m_isOpen || ReadsDifferently(value, stored);
        return AddText(field, stored);
    }
    for (ULONG i = 0; i < ElementCount(value.Type(), bytes); ++i)
    {
        AddText(field, StoredTextOf(single, Element(value.Type(), bytes, i)));
    }
}

void GramSet::Add(const ValueSource& values, bool ofRecipient)
{
    const auto add = [&](const IndexedTag& each)
    {
        if (const EncodedValue value = values.Find(each.tag))
        {
            AddValue(each.field, value);
        }
    };
    if (ofRecipient)
    {
        std::for_each(std::begin(OfRecipient), std::end(OfRecipient), add);
    }
    else
    {
        std::for_each(std::begin(OfMessage), std::end(OfMessage), add);
    }
}

} // namespace zebstore
