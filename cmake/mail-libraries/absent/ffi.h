/* In place of libffi: GObject's generic marshaller, which GMime does not use. A call of it ends the program. */
#ifndef ZEB_ABSENT_FFI_H
#define ZEB_ABSENT_FFI_H

#include <stdlib.h>

typedef struct
{
    size_t size;
} ffi_type;
typedef struct
{
    int unused;
} ffi_cif;
typedef long long ffi_sarg;
typedef unsigned long long ffi_arg;
enum
{
    FFI_OK,
    FFI_DEFAULT_ABI
};

static ffi_type ffi_type_void, ffi_type_sint, ffi_type_uint, ffi_type_slong, ffi_type_ulong, ffi_type_sint64,
    ffi_type_uint64, ffi_type_float, ffi_type_double, ffi_type_pointer;

#define ffi_prep_cif(cif, abi, count, result, types) (abort(), !FFI_OK)
#define ffi_call(cif, function, result, arguments) abort()

#endif
