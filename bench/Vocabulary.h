// Texts of words that are used as often as those of a language.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace bench
{

/// Words made of syllables, the frequent ones short; the n-th is used about 1/n as often as the first. Each object gives the
/// same texts.
class Vocabulary
{
public:
    Vocabulary();

    const std::string& At(size_t rank) const { return m_words[rank]; }
    /// The next text, of `size` bytes.
    std::string Body(size_t size);

private:
    std::string Word(size_t syllables);

    std::mt19937 m_random{42};
    std::vector<std::string> m_words;
    std::vector<double> m_sums;
};

} // namespace bench
