#include "bench/Mail.h"

#include <cstdio>
#include <ctime>

namespace bench
{

namespace
{

constexpr size_t TextSize = 1500;
constexpr size_t LineWidth = 72;
const char* const People[] = {"Ada Brandt <ada@example.org>", "Boris Cole <boris@example.org>",
                              "=?utf-8?q?Fran=C3=A7oise_Haddad?= <francoise@example.org>", "chen@example.org",
                              "\"Ford, Dana\" <dana@example.org>"};

std::string Wrapped(const std::string& text)
{
    std::string wrapped;
    size_t width = 0;
    for (const char c : text)
    {
        const bool ends = c == ' ' && width > LineWidth;
        wrapped += ends ? '\n' : c;
        width = ends ? 0 : width + 1;
    }
    return wrapped + "\n";
}

std::string DateOf(unsigned number)
{
    const std::time_t time = 1500000000 + static_cast<std::time_t>(number * 2654435761u % 200000000u);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[64];
    std::strftime(text, sizeof(text), "%a, %d %b %Y %H:%M:%S +0000", &parts);
    return text;
}

} // namespace

std::string MailWriter::Headers()
{
    const std::string id = std::to_string(m_number) + "." + std::to_string(m_number * 2654435761u) + "@example.org";
    return "Return-Path: <sender@example.org>\nReceived: from a.example.org by b.example.org; " + DateOf(m_number) +
           "\nFrom: " + People[m_number % 5] + "\nTo: " + People[(m_number + 1) % 5] + ", " +
           People[(m_number + 2) % 5] + "\nSubject: " + m_words.Body(30) + "\nDate: " + DateOf(m_number) +
           "\nMessage-ID: <" + id + ">\nMIME-Version: 1.0\n";
}

std::string MailWriter::Text()
{
    return Wrapped(m_words.Body(TextSize));
}

std::string MailWriter::Next()
{
    ++m_number;
    std::string mail = Headers();
    if (m_number % 4 == 0)
    {
        const std::string text = Text();
        return mail +
               "Content-Type: multipart/alternative; boundary=\"edge\"\n\n--edge\nContent-Type: text/plain; "
               "charset=utf-8\n\n" +
               text + "--edge\nContent-Type: text/html; charset=utf-8\n\n<html><body><p>" + text +
               "</p></body></html>\n--edge--\n";
    }
    if (m_number % 4 == 1)
    {
        return mail + "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: quoted-printable\n\n" +
               Text() + "Gr=C3=BC=C3=9Fe\n";
    }
    return mail + "Content-Type: text/plain; charset=us-ascii\n\n" + Text();
}

} // namespace bench
