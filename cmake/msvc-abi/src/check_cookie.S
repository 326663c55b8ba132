// __security_check_cookie: ends the process when the cookie in RCX, read from the end of a stack frame, was overwritten.
// Changes no register but the flags.
    .text
    .globl __security_check_cookie
__security_check_cookie:
    cmpq __security_cookie(%rip), %rcx
    jne 1f
    ret
1:  movl $2, %ecx // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    int $0x29
