#include "poll/recipe.h"

#include "address/register_table.h"
#include "poll/address_merge.h"

#include <cstring>

// The recipe plan: variables of this station in address order, merged into blocks.

/// The variables of the configured station, in the order of their addresses.
static QVector<_RCP_VAR_PRO> ownVariables(const QVector<_RCP_VAR_PRO> &vars)
{
    QVector<_RCP_VAR_PRO> own;
    std::vector<quint32> weights;
    for (const _RCP_VAR_PRO &variable : vars) {
        if (variable.stationNo != driver.stationNo)
            continue;
        own.append(variable);
        weights.push_back(static_cast<quint32>(getRegAddressWeight(variable.regType, variable.address, 1)));
    }

    QVector<_RCP_VAR_PRO> sorted;
    for (int i : sortedByWeight(weights))
        sorted.append(own.at(i));
    return sorted;
}

static KEY_ADDRESS itemOf(const _RCP_VAR_PRO &variable)
{
    KEY_ADDRESS item;
    item.requestTag   = variable.requestTag;
    item.regType      = variable.regType;
    item.address      = variable.address;
    item.count        = variable.count;
    item.bufferOffset = variable.bufferOffset;
    std::memset(item.data, 0, sizeof item.data);
    return item;
}

static _RCP_VAR_PRO blockOf(const KEY_ADDRESS &item)
{
    _RCP_VAR_PRO block = _RCP_VAR_PRO();
    block.requestTag   = item.requestTag;
    block.regType      = item.regType;
    block.address      = item.address;
    block.count        = item.count;
    block.bufferOffset = item.bufferOffset;
    return block;
}

qint32 intf_setRcpAddress(QVector<_RCP_VAR_PRO> &vars)
{
    driver.recipeVars = ownVariables(vars);

    QList<KEY_ADDRESS> items;
    for (int i = 0; i < driver.recipeVars.size(); ++i)
        items.append(itemOf(driver.recipeVars.at(i)));

    driver.recipeBlockStart.clear();
    driver.recipeBlocks.clear();
    addrMerge(items, MERGE_RECIPE);
    for (int i = 0; i < items.size(); ++i)
        driver.recipeBlocks.append(blockOf(items.at(i)));
    return static_cast<qint32>(driver.recipeVars.size());
}

// Deliberate: the words of a block are taken as one run, so a write is right only where the buffer holds the variables
// of a block in address order and without gaps.
void rcpAddrToVar(_RCP_VAR_PRO block, VARIABLE &request, qint32 withData)
{
    request.requestTag = block.requestTag;
    request.regType    = block.regType;
    request.address    = block.address;
    request.count      = block.count;
    std::memset(request.value, 0, sizeof request.value);
    if (withData == 0 || block.count < 1 || driver.recipeBuffer == nullptr)
        return;

    const qint32 words = qMin<qint32>(block.count, VALUE_BUFFER_SIZE / 2);
    std::memcpy(request.value, driver.recipeBuffer + block.bufferOffset, static_cast<size_t>(words) * 2);
}
