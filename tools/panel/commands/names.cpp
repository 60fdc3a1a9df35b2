#include "commands/commands.h"

#include "commands/ending.h"
#include "common/usage_error.h"

#include <fmt/format.h>
#include <iostream>

// What can be told of types, addresses and names without a PLC.

int runCheck(const TagBook &book, const std::vector<std::string> &texts)
{
    int code = EXIT_DONE;
    for (const std::string &text : texts) {
        try {
            std::cout << book.resolve(text, Access::READ).name << " valid" << std::endl;
        } catch (const UsageError &error) {
            std::cerr << "fins_panel: " << error.what() << std::endl;
            code = EXIT_USAGE;
        }
    }
    return code;
}

int runComplete(const TagBook &book, const Project &project, const std::string &kind)
{
    if (kind == "recipes") {
        for (const Recipe &recipe : project.recipes)
            std::cout << recipe.name << '\n';
    } else if (kind == "groups") {
        for (const std::string &group : groupsOf({&book}))
            std::cout << group << '\n';
    } else {
        for (const Tag &tag : book.tags())
            std::cout << tag.name << '\n';
    }
    return EXIT_DONE;
}

static void printRow(const std::string &type, const std::string &kind, const std::string &minimum,
                     const std::string &maximum, const std::string &notation)
{
    std::cout << fmt::format("{:<8} {:<5} {:>8} {:>10}  {}\n", type, kind, minimum, maximum, notation);
}

// The driver lists the bit types (0) and the word types (1).
static void printTypes(const DriverLibrary &library, qint32 kind)
{
    QList<QString> names;
    library.getRegListByType(kind, names);
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        QList<QString> fields; // notation, minimum, maximum, kind, writable
        library.getRegDiscription(names.at(i), fields);
        if (fields.size() == 5)
            printRow(names.at(i).toStdString(), kind == 0 ? "bit" : "word", fields.at(1).toStdString(),
                     fields.at(2).toStdString(), fields.at(0).toStdString());
    }
}

int runTypes(const DriverLibrary &library)
{
    printRow("type", "kind", "first", "last", "notation");
    printTypes(library, 1);
    printTypes(library, 0);
    return EXIT_DONE;
}

// What intf_multiCopy answers when addresses were limited to the type's last one.
static const qint32 COPIES_LIMITED = 2;

int runCopies(const DriverLibrary &library, const std::string &text, long count, long step)
{
    const Item item = parseItem(library, text, Access::READ);
    QVector<QString> texts;
    QVector<qint32> addresses;
    const qint32 result = library.multiCopy(item.regType, item.address, static_cast<qint32>(count),
                                           static_cast<qint32>(step), texts, addresses);
    for (const qint32 address : addresses)
        std::cout << itemText(Item{item.regType, address, 1, item.isBit, item.notation}) << '\n';
    if (result == COPIES_LIMITED)
        std::cerr << "addresses past the last one of " << item.regType.toStdString() << " were set to the last one"
                  << std::endl;
    return EXIT_DONE;
}
