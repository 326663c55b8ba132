// Where vcruntime140.dll keeps the names that this module asked type_info for.
#include <vcruntime_typeinfo.h>

alignas(16) __type_info_node __type_info_root_node;
