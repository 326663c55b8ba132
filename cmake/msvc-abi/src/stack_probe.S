// __chkstk: touches each page of a stack frame of RAX bytes, so that the guard page is met in order. Changes no register
// but the flags; the caller moves RSP.
    .text
    .globl __chkstk
__chkstk:
    pushq %rcx
    pushq %rax
    leaq 24(%rsp), %rcx
    cmpq $0x1000, %rax
    jb 2f
1:  subq $0x1000, %rcx
    testq %rcx, (%rcx)
    subq $0x1000, %rax
    cmpq $0x1000, %rax
    ja 1b
2:  subq %rax, %rcx
    testq %rcx, (%rcx)
    popq %rax
    popq %rcx
    ret
