#include "zebstore/storage/TextBlock.h"

#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr size_t BitmapSize = BlockSlots / 8;
constexpr size_t NumberSize = sizeof(std::uint32_t);

/// The index of a part; a damaged count is cut to what the bytes can hold.
class PartIndex
{
public:
    explicit PartIndex(std::string_view part)
        : m_part(part)
        , m_count(std::min<size_t>(ReadNumber<std::uint32_t>(part),
                                   part.size() < NumberSize ? 0 : (part.size() - NumberSize) / (2 * NumberSize)))
    {
    }

    size_t Count() const { return m_count; }
    Gram At(size_t index) const { return ReadNumber<Gram>(m_part, NumberSize * (1 + index)); }
    std::string_view SlotsOf(size_t index) const
    {
        const std::string_view all = m_part.substr(std::min(m_part.size(), NumberSize * (1 + 2 * m_count)));
        const size_t begin = index == 0 ? 0 : EndOf(index - 1);
        const size_t end = std::min(EndOf(index), all.size());
        return begin < end ? all.substr(begin, end - begin) : std::string_view();
    }
    /// The place of a gram, Count() when the part does not list it.
    size_t Find(Gram gram) const
    {
        size_t low = 0, high = m_count;
        while (low < high)
        {
            const size_t middle = (low + high) / 2;
            if (At(middle) < gram)
            {
                low = middle + 1;
            }
            else
            {
                high = middle;
            }
        }
        return low < m_count && At(low) == gram ? low : m_count;
    }

private:
    size_t EndOf(size_t index) const { return ReadNumber<std::uint32_t>(m_part, NumberSize * (1 + m_count + index)); }

    std::string_view m_part;
    size_t m_count;
};

Slots Decode(std::string_view bytes)
{
    Slots slots;
    if (bytes.size() == BitmapSize)
    {
        for (size_t i = 0; i < BlockSlots; i += 64)
        {
            slots |= Slots(ReadNumber<std::uint64_t>(bytes, i / 8)) << i;
        }
        return slots;
    }
    size_t next = 0, distance = 0;
    int shift = 0;
    for (const char each : bytes)
    {
        const auto byte = static_cast<unsigned char>(each);
        distance |= static_cast<size_t>(byte & 0x7F) << shift;
        shift += 7;
        if ((byte & 0x80) != 0 && shift < 21)
        {
            continue;
        }
        next += distance;
        if (next >= BlockSlots)
        {
            return slots;
        }
        slots.set(next++);
        distance = 0;
        shift = 0;
    }
    return slots;
}

std::string Encoded(const std::vector<size_t>& slots)
{
    std::string bytes;
    size_t next = 0;
    for (const size_t slot : slots)
    {
        size_t distance = slot - next;
        for (; distance >= 0x80; distance >>= 7)
        {
            bytes += static_cast<char>(0x80 | (distance & 0x7F));
        }
        bytes += static_cast<char>(distance);
        next = slot + 1;
    }
    if (bytes.size() < BitmapSize)
    {
        return bytes;
    }
    bytes.assign(BitmapSize, '\0');
    for (const size_t slot : slots)
    {
        bytes[slot / 8] = static_cast<char>(bytes[slot / 8] | (1 << (slot % 8)));
    }
    return bytes;
}

} // namespace

Slots SlotsWith(std::string_view part, Gram gram)
{
    const PartIndex index(part);
    const size_t place = index.Find(gram);
    return place < index.Count() ? Decode(index.SlotsOf(place)) : Slots();
}

void CountGrams(std::string_view part, std::vector<std::uint32_t>& counts)
{
    const PartIndex index(part);
    for (size_t i = 0; i < index.Count(); ++i)
    {
        const Slots slots = Decode(index.SlotsOf(i));
        for (size_t slot = 0; slot < BlockSlots; ++slot)
        {
            counts[slot] += slots[slot] ? 1u : 0u;
        }
    }
}

void TextBlockWriter::Add(size_t slot, const std::vector<Gram>& grams)
{
    for (const Gram gram : grams)
    {
        m_parts[PartOf(gram)].push_back((static_cast<std::uint64_t>(gram) << SlotBits) | slot);
    }
    m_pairs += grams.size();
}

std::string TextBlockWriter::Part(size_t part)
{
    std::vector<std::uint64_t>& pairs = m_parts[part];
    std::sort(pairs.begin(), pairs.end());
    std::string grams, ends, data;
    std::vector<size_t> slots;
    std::uint32_t count = 0;
    for (auto pair = pairs.begin(); pair != pairs.end(); ++count)
    {
        const auto gram = static_cast<Gram>(*pair >> SlotBits);
        slots.clear();
        for (; pair != pairs.end() && static_cast<Gram>(*pair >> SlotBits) == gram; ++pair)
        {
            slots.push_back(static_cast<size_t>(*pair & (BlockSlots - 1)));
        }
        AppendNumber(grams, gram);
        data += Encoded(slots);
        AppendNumber(ends, static_cast<std::uint32_t>(data.size()));
    }
    std::string whole;
    if (count != 0)
    {
        AppendNumber(whole, count);
        whole += grams + ends + data;
    }
    return whole;
}

} // namespace zebstore
