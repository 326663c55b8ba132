// Random values of all types, the same for one seed on every target.
#pragma once

#include "tests/zebstore/model/Value.h"

#include <random>

namespace zebstore::model
{

/// Texts of many scripts that come again and again, so that keys are equal and texts have parts in common.
class Words
{
public:
    explicit Words(unsigned seed);
    const std::vector<Wide>& All() const { return m_words; }

private:
    std::vector<Wide> m_words;
};

class Random
{
public:
    Random(unsigned seed, const Words& words)
        : m_random(seed)
        , m_words(words)
    {
    }

    size_t Below(size_t bound) { return m_random() % bound; }
    bool OneIn(size_t count) { return Below(count) == 0; }
    template <class Range>
    const auto& Pick(const Range& range)
    {
        return *(std::begin(range) + static_cast<std::ptrdiff_t>(Below(static_cast<size_t>(std::size(range)))));
    }

    /// @param isShort no text of hundreds or thousands of characters
    Wide Text(bool isShort = false);
    Value ValueOf(ULONG type, bool isShort = false);

private:
    std::int64_t Whole(ULONG type);
    double Real();
    std::string Bytes(bool isShort);
    Wide Cased(const Wide& text);

    std::mt19937 m_random;
    const Words& m_words;
};

/// The properties that random messages have, with the types that they may have.
struct Kind
{
    ULONG id;
    std::vector<ULONG> types;
};
const std::vector<Kind>& MessageKinds();

} // namespace zebstore::model
