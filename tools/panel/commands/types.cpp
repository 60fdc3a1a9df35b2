#include "commands/commands.h"

#include "commands/exit_codes.h"

#include <cstdio>
#include <iostream>

static void printRow(const std::string &type, const std::string &kind, const std::string &minimum,
                     const std::string &maximum, const std::string &notation)
{
    char line[160];
    std::snprintf(line, sizeof line, "%-8s %-5s %8s %10s  %s", type.c_str(), kind.c_str(), minimum.c_str(),
                  maximum.c_str(), notation.c_str());
    std::cout << line << '\n';
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
