// Values of MAPI's structures in the form of Property.
#pragma once

#include "tools/common/Property.h"

namespace zeb::tools
{

/// A buffer that a MAPI call handed out, freed with the object.
template <class T>
class Given
{
public:
    Given() = default;
    ~Given()
    {
        if (m_buffer)
        {
            Zeb_MemFree(m_buffer);
        }
    }
    Given(const Given&) = delete;
    Given& operator=(const Given&) = delete;
    T** Put() { return &m_buffer; }
    T* Get() const { return m_buffer; }

private:
    T* m_buffer = nullptr;
};

/// Tags as MAPI takes them, for the length of one call.
class TagList
{
public:
    explicit TagList(const std::vector<ULONG>& tags);
    SPropTagArray* Get() { return reinterpret_cast<SPropTagArray*>(m_counted.data()); }

private:
    std::vector<ULONG> m_counted;
};

/// Whether a type is that of text, of either width, single or multi-valued.
bool IsText(ULONG type);

/// The tag of a text in its 8-bit form.
ULONG Narrowed(ULONG tag);

/// The bytes of a value as Property has them. @throws ToolError for a type that no property can have
std::vector<std::string> ValueBytes(const SPropValue& value);

/// Whether PT_UNICODE text holds the character that stands for bytes which are no text.
bool HasReplacement(const std::vector<std::string>& values);

/// Gives a text, read as PT_UNICODE, the 8-bit form that it was written in where the 16-bit form lost
/// something of it. @param narrow the same text read in 8 bits
void SettleWidth(Property& property, const std::vector<std::string>& narrow);

} // namespace zeb::tools
