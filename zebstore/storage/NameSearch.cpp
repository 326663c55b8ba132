#include "zebstore/storage/NameSearch.h"

#include "platform/tags.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Compare.h"
#include "zebstore/storage/Encoding.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace zebstore
{

namespace
{

constexpr ULONG WordTags[] = {PR_DISPLAY_NAME_W, PR_GIVEN_NAME_W, PR_SURNAME_W};
constexpr ULONG WholeTags[] = {PR_ACCOUNT_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W};

std::string FoldedText(const ValueSource& entry, ULONG tag)
{
    const EncodedValue value = entry.Find(tag);
    if (!IsText(value.Type()) || value.large != nullptr)
    {
        return {};
    }
    return Folded(StoredTextOf(value.Type(), value.bytes), TextFold::IgnoreCaseAndMarks);
}

// Bytes beyond ASCII are letters.
bool IsWordPart(char each)
{
    const unsigned char byte = static_cast<unsigned char>(each);
    return byte >= 0x80 || std::isalnum(byte) != 0;
}

bool Begins(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

bool BeginsAWord(std::string_view text, std::string_view beginning)
{
    bool inWord = false;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const bool part = IsWordPart(text[i]);
        if (part && !inWord && Begins(text.substr(i), beginning))
        {
            return true;
        }
        inWord = part;
    }
    // What begins with a sign begins the whole text or nothing.
    return Begins(text, beginning);
}

std::vector<std::string_view> WordsOf(std::string_view name)
{
    constexpr const char* Between = " \t,;";
    std::vector<std::string_view> words;
    for (size_t begin = name.find_first_not_of(Between); begin != std::string_view::npos;)
    {
        const size_t end = std::min(name.find_first_of(Between, begin), name.size());
        words.push_back(name.substr(begin, end - begin));
        begin = name.find_first_not_of(Between, end);
    }
    return words;
}

} // namespace

bool MatchesName(std::string_view folded, const ValueSource& entry)
{
    std::vector<std::string> names, wholes;
    for (const ULONG tag : WordTags)
    {
        names.push_back(FoldedText(entry, tag));
    }
    for (const ULONG tag : WholeTags)
    {
        wholes.push_back(FoldedText(entry, tag));
    }
    if (Begins(folded, "="))
    {
        const std::string_view whole = folded.substr(1);
        return !whole.empty() && (names[0] == whole || std::find(wholes.begin(), wholes.end(), whole) != wholes.end());
    }
    const std::vector<std::string_view> words = WordsOf(folded);
    const auto fits = [&](std::string_view word)
    {
        return std::any_of(names.begin(), names.end(),
                           [&](const std::string& name) { return BeginsAWord(name, word); }) ||
               std::any_of(wholes.begin(), wholes.end(), [&](const std::string& whole) { return Begins(whole, word); });
    };
    return !words.empty() && std::all_of(words.begin(), words.end(), fits);
}

} // namespace zebstore
