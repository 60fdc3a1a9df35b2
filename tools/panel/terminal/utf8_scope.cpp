#include "terminal/utf8_scope.h"

#include <initializer_list>

// Every system has them under one of these names.
locale_t utf8Tables()
{
    static const locale_t tables = [] {
        for (const char *name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"}) {
            if (const locale_t found = newlocale(LC_CTYPE_MASK, name, nullptr))
                return found;
        }
        return static_cast<locale_t>(nullptr);
    }();
    return tables;
}
