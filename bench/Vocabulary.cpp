#include "bench/Vocabulary.h"

#include <algorithm>

namespace bench
{

namespace
{

constexpr size_t Size = 20000;

} // namespace

Vocabulary::Vocabulary()
{
    double sum = 0;
    for (size_t i = 0; i < Size; ++i)
    {
        m_words.push_back(Word(1 + (i > 50 ? 1 : 0) + m_random() % 2 + (i > 1000 ? m_random() % 2 : 0)));
        sum += 1.0 / static_cast<double>(i + 3);
        m_sums.push_back(sum);
    }
}

std::string Vocabulary::Body(size_t size)
{
    std::string body;
    while (body.size() < size)
    {
        const double place = m_random() / 4294967296.0 * m_sums.back();
        body += m_words[static_cast<size_t>(std::upper_bound(m_sums.begin(), m_sums.end(), place) - m_sums.begin())];
        body += ' ';
    }
    body.resize(size);
    return body;
}

std::string Vocabulary::Word(size_t syllables)
{
    static const char* const Begins[] = {"b", "c", "d", "f",  "g",  "h",  "l",  "m",  "n",  "p",  "r", "s",
                                         "t", "v", "w", "st", "tr", "pr", "ch", "th", "pl", "gr", "",  ""};
    static const char* const Vowels[] = {"a", "e", "i", "o", "u", "ea", "ou", "ai", "e", "e", "i"};
    static const char* const Ends[] = {"", "", "", "n", "r", "s", "t", "l", "nd", "nt", "ck", "m"};
    std::string word;
    for (; syllables > 0; --syllables)
    {
        word += Begins[m_random() % 24];
        word += Vowels[m_random() % 11];
        word += Ends[m_random() % 12];
    }
    return word;
}

} // namespace bench
