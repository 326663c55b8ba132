// type_info as the compiler lays it out, named and compared by vcruntime140.dll.
#pragma once
#include <vcruntime_exception.h>
#ifdef __cplusplus
#pragma pack(push, 8)
struct __std_type_info_data
{
    char const* _UndecoratedName;
    char const _DecoratedName[1];
};
struct __type_info_node
{
    void* _Header[2];
};
extern "C" int __cdecl __std_type_info_compare(__std_type_info_data const*, __std_type_info_data const*);
extern "C" size_t __cdecl __std_type_info_hash(__std_type_info_data const*);
extern "C" char const* __cdecl __std_type_info_name(__std_type_info_data*, __type_info_node*);
extern __type_info_node __type_info_root_node;

class type_info
{
public:
    type_info(type_info const&) = delete;
    type_info& operator=(type_info const&) = delete;
    size_t hash_code() const noexcept { return __std_type_info_hash(&_Data); }
    bool operator==(type_info const& other) const { return __std_type_info_compare(&_Data, &other._Data) == 0; }
    bool operator!=(type_info const& other) const { return __std_type_info_compare(&_Data, &other._Data) != 0; }
    bool before(type_info const& other) const { return __std_type_info_compare(&_Data, &other._Data) < 0; }
    char const* name() const { return __std_type_info_name(&_Data, &__type_info_root_node); }
    char const* raw_name() const { return _Data._DecoratedName; }
    virtual ~type_info() noexcept;

private:
    mutable __std_type_info_data _Data;
};
#pragma pack(pop)

namespace std
{

using ::type_info;

// What vcruntime140.dll throws it makes itself; libc++ makes its own by __construct_from_string_literal.
class bad_cast : public exception
{
public:
    bad_cast() noexcept
        : exception("bad cast", 1)
    {
    }
    static bad_cast __construct_from_string_literal(char const* text) noexcept { return bad_cast(text, 1); }

private:
    bad_cast(char const* message, int) noexcept
        : exception(message, 1)
    {
    }
};

class bad_typeid : public exception
{
public:
    bad_typeid() noexcept
        : exception("bad typeid", 1)
    {
    }
    static bad_typeid __construct_from_string_literal(char const* text) noexcept { return bad_typeid(text, 1); }

protected:
    bad_typeid(char const* message, int) noexcept
        : exception(message, 1)
    {
    }
};

class __non_rtti_object : public bad_typeid
{
public:
    static __non_rtti_object __construct_from_string_literal(char const* text) noexcept
    {
        return __non_rtti_object(text, 1);
    }

private:
    __non_rtti_object(char const* message, int) noexcept
        : bad_typeid(message, 1)
    {
    }
};

} // namespace std
#endif
