#include "address/register_table.h"

#include <QtCore/QStringList>

// The register types as lists for address entry.

qint32 intf_getRegListByType(qint32 type, QList<QString> &names)
{
    for (int i = 0; i < REG_COUNT; ++i) {
        const QStringList range = ADDRESS_RANGE_FINS[i].split(QLatin1Char(','));
        if (range.size() != RANGE_FIELDS)
            continue;
        // A kind 2 would be a word type, too; the table has none.
        const int kind = range.at(RANGE_KIND).toInt();
        if (kind == type || (type == 1 && kind == 2))
            names.append(REG_LIST[i]);
    }
    return type == 0 || type == 1 ? 1 : 0;
}

qint32 intf_getRegDiscription(QString regType, QList<QString> &fields)
{
    const int i = findRegister(regType);
    if (i < 0)
        return 0;

    const QStringList range = ADDRESS_RANGE_FINS[i].split(QLatin1Char(','));
    if (range.size() == RANGE_FIELDS)
        fields += range;
    return 0;
}
