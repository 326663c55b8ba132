// Constants that MinGW-w64's <math.h> refers to; its own runtime has them.
extern "C"
{
    extern const float __INFF = __builtin_huge_valf();
    extern const long double __INFL = __builtin_huge_vall();
    extern const float __QNANF = __builtin_nanf("");
}
