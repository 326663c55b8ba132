// The format of the tools' --help.
#pragma once

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>

namespace zeb::tools
{

/// Shows an argument by its kind ("FOLDER"), in the usage line and in the list, and an option's type in short form: its
/// name, or the allowed words.
class HelpFormatter : public CLI::Formatter
{
public:
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        return isPositional ? option->get_type_name() : Formatter::make_option_name(option, false);
    }

    std::string make_option_usage(const CLI::Option* option) const override
    {
        const std::string name = option->get_type_name();
        return option->get_required() ? name : "[" + name + "]";
    }

    std::string make_option_opts(const CLI::Option* option) const override
    {
        if (option->get_positional() || option->get_type_size() == 0)
        {
            return "";
        }
        const std::string value = option->get_default_str();
        return " " + TypeOf(option) + (value.empty() ? "" : " (" + value + ")") +
               (option->get_required() ? " REQUIRED" : "");
    }

private:
    /// "N:UINT in [1 - 9]" becomes "N"; "TEXT:{a,b}" becomes "a|b".
    static std::string TypeOf(const CLI::Option* option)
    {
        const std::string type = option->get_type_name();
        const size_t words = type.find(":{");
        if (words == std::string::npos)
        {
            return type.substr(0, type.find(':'));
        }
        std::string choice = type.substr(words + 2, type.find('}') - words - 2);
        std::replace(choice.begin(), choice.end(), ',', '|');
        return choice;
    }
};

} // namespace zeb::tools
