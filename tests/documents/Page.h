// A page of the documents, as a test reads it.
#pragma once

#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace zeb::test
{

/// A section of docs/failures.md: "## NAME (0xCODE)", with the indented lines of its text.
struct FailureSection
{
    std::string code;
    std::string lines; ///< each ends with '\n'
};

inline std::map<std::string, FailureSection> ReadFailures(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::regex heading("## (\\w+) \\((0x[0-9A-F]{8})\\)\r?");
    std::map<std::string, FailureSection> sections;
    std::string name;
    for (std::string line; std::getline(file, line);)
    {
        std::smatch found;
        if (std::regex_match(line, found, heading))
        {
            name = found[1];
            sections[name].code = found[2];
        }
        else if (line.rfind("    ", 0) == 0 && !name.empty())
        {
            sections[name].lines += line.substr(4) + "\n";
        }
    }
    return sections;
}

/// Without what differs between runs and compilers: identifiers, numbers and paths of objects, the spelling of a class.
inline std::string WithoutDetails(std::string text)
{
    text = std::regex_replace(text, std::regex("entry [0-9A-F]{20,}[.]*( \\(\\d+ bytes\\))?"), "entry ...$1");
    text = std::regex_replace(text, std::regex("message \\d+"), "message ...");
    text = std::regex_replace(text, std::regex("store file '[^']*'"), "store file '...'");
    return std::regex_replace(text, std::regex("operator (zeb::)?CString[^:]*"), "operator CStringW");
}

} // namespace zeb::test
