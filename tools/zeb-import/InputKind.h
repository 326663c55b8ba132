// What an input is, from its content.
#pragma once

#include <string>

namespace zeb::tools
{

enum class InputKind
{
    Pst,    ///< a PST or OST file
    Mbox,   ///< an mbox file
    Folder, ///< a folder of mail files, or a Maildir
    Mail,   ///< a file with one message: Internet mail or a .msg file
};

/// Whether a file begins as a compound file, as .msg files are.
bool BeginsAsCompoundFile(const std::string& bytes);

/// Looks at the first bytes of a file; its name does not matter. @param input UTF-8
/// @throws ToolError naming the input when it cannot be read or is of no known kind
InputKind KindOf(const std::string& input);

} // namespace zeb::tools
