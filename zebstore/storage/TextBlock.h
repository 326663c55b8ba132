// A block of the text index: which of its messages have which grams.
//
// The grams of a block are spread over BlockParts parts by their upper bits. A part is
//
//   4 bytes   count of grams
//   4 bytes   for each gram, in rising order: the gram
//   4 bytes   for each gram: the end of its slots, counted from the end of this index
//   ...       the slots: BlockSlots / 8 bytes with a bit for each slot or, where that is shorter, the distance of each slot
//             from the one before, less one, seven bits to a byte, the upper bit set in all bytes but the last
//
// All numbers are little endian.
#pragma once

#include "zebstore/storage/TextGrams.h"

#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zebstore
{

/// A message has a slot of a block.
constexpr int SlotBits = 11;
constexpr size_t BlockSlots = size_t(1) << SlotBits;
constexpr int PartBits = 8;
constexpr size_t BlockParts = size_t(1) << PartBits;
using Slots = std::bitset<BlockSlots>;

/// The part of a block in which a gram is.
inline size_t PartOf(Gram gram)
{
    return gram >> (32 - PartBits);
}

/// The slots that have a gram; none when the part does not list it. What a damaged part claims beyond its bytes is left out.
Slots SlotsWith(std::string_view part, Gram gram);
/// How many grams of the part each slot has is added to `counts`, which has BlockSlots elements.
void CountGrams(std::string_view part, std::vector<std::uint32_t>& counts);

/// Encodes a block.
class TextBlockWriter
{
public:
    TextBlockWriter()
        : m_parts(BlockParts)
    {
    }

    /// REQUIRES: slots rise.
    void Add(size_t slot, const std::vector<Gram>& grams);
    /// Pairs of a slot and a gram so far.
    size_t Pairs() const { return m_pairs; }
    /// Empty when no slot has a gram of the part.
    std::string Part(size_t part);

private:
    /// The gram, shifted left by SlotBits, plus the slot.
    std::vector<std::vector<std::uint64_t>> m_parts;
    size_t m_pairs = 0;
};

} // namespace zebstore
