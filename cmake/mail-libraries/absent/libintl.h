/* In place of gettext: messages stay in English. */
#ifndef ZEB_ABSENT_LIBINTL_H
#define ZEB_ABSENT_LIBINTL_H

#define gettext(text) ((char*)(text))
#define dgettext(domain, text) ((char*)(text))
#define dcgettext(domain, text, category) ((char*)(text))
#define dngettext(domain, one, many, count) ((char*)((count) == 1 ? (one) : (many)))
#define textdomain(domain) ((char*)(domain))
#define bindtextdomain(domain, folder) ((char*)(folder))
#define bind_textdomain_codeset(domain, codeset) ((char*)(codeset))

#endif
