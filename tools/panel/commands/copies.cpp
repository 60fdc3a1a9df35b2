#include "commands/commands.h"

#include "commands/exit_codes.h"
#include "values/items.h"

#include <iostream>

// What intf_multiCopy answers when addresses were limited to the type's last one.
static const qint32 COPIES_LIMITED = 2;

int runCopies(const DriverLibrary &library, const std::string &text, long count, long step)
{
    const Item item = parseItem(library, text, Access::READ);
    QVector<QString> texts;
    QVector<qint32> addresses;
    const qint32 result = library.multiCopy(item.regType, item.address, static_cast<qint32>(count),
                                           static_cast<qint32>(step), texts, addresses);
    for (int i = 0; i < static_cast<int>(texts.size()); ++i)
        std::cout << item.regType.toStdString() << ':' << texts.at(i).toStdString() << '\n';
    if (result == COPIES_LIMITED)
        std::cerr << "addresses past the last one of " << item.regType.toStdString() << " were set to the last one"
                  << std::endl;
    return EXIT_DONE;
}
