// The image's load configuration, of which winnt.h has the structure (IMAGE_LOAD_CONFIG_DIRECTORY64): where the system finds
// the cookie of protected stacks and, for control flow guard, the functions that may be called indirectly (the linker lists
// them) and the pointers to its checks, which it replaces. The DLLs that the image needs are looked for in the program's
// folder and the system's, not in the current one and PATH (LOAD_LIBRARY_SEARCH_DEFAULT_DIRS).
    .section .rdata,"dr"
    .globl _load_config_used
    .p2align 3
_load_config_used:
    .long end_of_load_config - _load_config_used
    .fill 74, 1, 0
    .short 0x1000
    .fill 8, 1, 0
    .quad __security_cookie
    .fill 16, 1, 0
    .quad __guard_check_icall_fptr
    .quad __guard_dispatch_icall_fptr
    .quad __guard_fids_table
    .quad __guard_fids_count
    .long __guard_flags
    .fill 12, 1, 0
    .quad __guard_iat_table
    .quad __guard_iat_count
    .quad __guard_longjmp_table
    .quad __guard_longjmp_count
end_of_load_config:

    .section .00cfg,"dr"
    .globl __guard_check_icall_fptr
    .p2align 3
__guard_check_icall_fptr:
    .quad check_nothing
    .globl __guard_dispatch_icall_fptr
__guard_dispatch_icall_fptr:
    .quad call_unchecked

// Without the system's checks: the function's address is in RCX, or in RAX.
    .text
check_nothing:
    ret
call_unchecked:
    jmpq *%rax
