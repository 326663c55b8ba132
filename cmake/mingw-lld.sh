#!/bin/sh
# For GCC's option "-wrapper mingw-lld.sh,LLD": links with LLD in place of GNU ld, which takes ten seconds for a test
# program of several thousand inline functions. Debian's GCC for MinGW-w64 ignores -fuse-ld.
lld=$1
shift
case $1 in
*/collect2) ;;
*) exec "$@" ;;
esac
shift
# All but GNU ld's plugin for link-time optimisation.
left=$#
while [ "$left" -gt 0 ]; do
    argument=$1
    shift
    left=$((left - 1))
    case $argument in
    -plugin)
        shift
        left=$((left - 1))
        ;;
    -plugin-opt=*) ;;
    *) set -- "$@" "$argument" ;;
    esac
done
exec "$lld" "$@"
