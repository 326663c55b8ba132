/* In place of GIO: what GMime's headers name of it. GMime's streams of GIO's files are left out. */
#ifndef ZEB_ABSENT_GIO_H
#define ZEB_ABSENT_GIO_H

#include <glib-object.h>

typedef struct _GFile GFile;
typedef struct _GInputStream GInputStream;
typedef struct _GOutputStream GOutputStream;

#endif
