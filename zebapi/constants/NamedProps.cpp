#include "zebapi/constants/internal/NamedProps.h"

namespace zeb
{

namespace
{

const GUID Address = {0x00062004, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
const GUID Own = {0x6B29A9C9, 0x8B5B, 0x4C6F, {0xB4, 0x93, 0x2E, 0x8C, 0x84, 0xA2, 0xF3, 0xF2}};

} // namespace

const NamedProp NamedProps[] = {
    {&Address, 0x8005001E}, {&Address, 0x8005001F}, {&Address, 0x8062001E}, {&Address, 0x8062001F},
    {&Address, 0x80D8001E}, {&Address, 0x80D8001F}, {&Address, 0x8083001E}, {&Address, 0x8083001F},
    {&Address, 0x8093001E}, {&Address, 0x8093001F}, {&Address, 0x80A3001E}, {&Address, 0x80A3001F},
    {&Address, 0x8082001E}, {&Address, 0x8082001F}, {&Address, 0x8092001E}, {&Address, 0x8092001F},
    {&Address, 0x80A2001E}, {&Address, 0x80A2001F}, {&Address, 0x801B001E}, {&Address, 0x801B001F},
    {&Address, 0x8046001E}, {&Address, 0x8046001F}, {&Address, 0x8049001E}, {&Address, 0x8049001F},
    {&Address, 0x804A001E}, {&Address, 0x804A001F}, {&Address, 0x8048001E}, {&Address, 0x8048001F},
    {&Address, 0x8047001E}, {&Address, 0x8047001F}, {&Address, 0x8045001E}, {&Address, 0x8045001F},
    {&Address, 0x801A001E}, {&Address, 0x801A001F}, {&Address, 0x801C001E}, {&Address, 0x801C001F},
    {&Address, 0x80071003}, {&Address, 0x8080001E}, {&Address, 0x8080001F}, {&Address, 0x8090001E},
    {&Address, 0x8090001F}, {&Address, 0x80A0001E}, {&Address, 0x80A0001F}, {&Address, 0x80220003},
    {&Address, 0x8534001E}, {&Address, 0x8534001F}, {&Address, 0x8535001E}, {&Address, 0x8535001F},
    {&Address, 0x802B001E}, {&Address, 0x802B001F}, {&Address, 0x8084001F}, {&Address, 0x8082001F},
    {&Address, 0x8094001F}, {&Address, 0x8092001F}, {&Address, 0x80A4001F}, {&Address, 0x80A2001F},
    {&Address, 0x8084001E}, {&Address, 0x8082001E}, {&Address, 0x8094001E}, {&Address, 0x8092001E},
    {&Address, 0x80A4001E}, {&Address, 0x80A2001E}, {&Address, 0x80060003}, {&Address, 0x80290003},
    {&Address, 0x80281003}, {&Address, 0x80271003}, {&Address, 0x80261003}, {&Address, 0x3A27001E},
    {&Address, 0x3A26001E}, {&Address, 0x3A2A001E}, {&Address, 0x3A28001E}, {&Address, 0x3A29001E},
    {&Own, 0x89010014},     {&Own, 0x8902001E},     {&Own, 0x8903001E},     {&Own, 0x8904001E},
    {&Own, 0x89050003},     {&Own, 0x8906101E},     {&Own, 0x89071102},     {&Own, 0x89560014},
    {&Own, 0x89570102},
};

const ULONG NamedPropCount = static_cast<ULONG>(sizeof(NamedProps) / sizeof(NamedProps[0]));

} // namespace zeb
