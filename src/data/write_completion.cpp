#include "data/write_completion.h"

#include "address/register_table.h"
#include "address/wrapping.h"
#include "data/area_walk.h"
#include "data/write_values.h"

/// Result argument of _write_FailOrSuc.
enum WriteResult {
    WRITE_FAILED    = 0,
    WRITE_SUCCEEDED = 1
};

/// Settles one bit, in the word's record at `index`. A negative bit settles nothing.
static void finishBit(qint32 index, qint32 bit, qint32 result)
{
    if (bit < 0)
        return;

    // Deliberate: the last outstanding bit ends the pending state, also that of a word write still queued.
    _DATA_ &area = driver.dataAreas[index];
    area.pendingBits = _setBitValue(area.pendingBits, bit, 0);
    if (area.pendingBits == 0)
        area.writePending = 0;
    if (result == WRITE_SUCCEEDED) {
        const qint32 written = wordOf(area.writeValue) >> bit & 1;
        quint8 &plcByte = area.plcValue[bit / 8];
        plcByte = static_cast<quint8>(_setBitValue(plcByte, bit % 8, written));
    }
}

static void finishWords(qint32 requestTag, const QString &regType, qint32 address, qint32 count, qint32 result)
{
    ReportKeys keys = { requestTag, regType, QString() };
    AreaWalk walk(requestTag, regType);
    for (qint32 i = 0; i < count; ++i) {
        const qint32 at = wrapAdd(address, i);
        _DATA_ &area = walk.to(at);
        area.writePending = 0;
        if (result != WRITE_SUCCEEDED) {
            walk.report(wordOf(area.plcValue), wordOf(area.writeValue), keys, at);
            continue;
        }
        area.plcValue[0] = area.writeValue[0];
        area.plcValue[1] = area.writeValue[1];
    }
}

static void finishBits(qint32 requestTag, const QString &regType, qint32 address, qint32 count, qint32 result)
{
    const QString wordType = wordTypeOf(regType);
    qint32 index = -1;
    for (qint32 i = 0; i < count; ++i) {
        const qint32 at = wrapAdd(address, i);
        index = getIndexOfBit(requestTag, wordType, at, index);
        finishBit(index, at % 16, result);
        // Deliberate: every bit reports, watched or not, and under the piece's first address.
        driver.valueChangeCallback(driver.stationNo, requestTag, regType, address);
    }
}

void _write_FailOrSuc(qint32 requestTag, QString regType, qint32 address, qint32 count, qint32 result)
{
    if (isBitType(regType))
        finishBits(requestTag, regType, address, count, result);
    else
        finishWords(requestTag, regType, address, count, result);
}

static void finishWrite()
{
    if (driver.writeList.isEmpty())
        return;

    const VARIABLE &head = driver.writeList.at(0);
    _write_FailOrSuc(head.requestTag, head.regType, head.address, head.count,
                     driver.commFailed != 0 ? WRITE_FAILED : WRITE_SUCCEEDED);
    // Deliberate: a failed write leaves the queue, too, and is not sent again.
    driver.writeList.removeFirst();
}

static void finishConditionRead()
{
    if (driver.conditionReadList.isEmpty())
        return;

    // Deliberate: only the piece queued last reports, and its -1 values are the sign of a conditional read's end.
    if (sameVariable(driver.conditionReadList.at(0), driver.currentRead))
        driver.valueChangeCallback(-1, -1, QLatin1String("-1"), driver.commFailed != 0 ? -1 : 0);
    // Deliberate: a failure ends all conditional reads that wait, unreported.
    if (driver.commFailed != 0)
        driver.conditionReadList.clear();
    else
        driver.conditionReadList.removeFirst();
}

static void rotatePollList()
{
    if (driver.readList.size() < 2)
        return;
    driver.readList.append(driver.readList.at(0));
    driver.readList.removeFirst();
}

/// Deliberate: the request is cleared on success and failure alike.
static void finishRecipeBlock(RecipeFlag flag)
{
    if (driver.commFailed == 0) {
        ++driver.recipeIndex;
        if (driver.recipeIndex < driver.recipeBlocks.size())
            return;
    }
    driver.recipeIndex = 0;
    if (driver.runtimeBlock == nullptr || driver.runtimeMutex == nullptr)
        return;
    driver.runtimeMutex->lock();
    driver.runtimeBlock[flag] = 0;
    driver.runtimeMutex->unlock();
}

void dealListWhenFinish()
{
    switch (driver.jobType) {
    case JOB_WRITE:
        finishWrite();
        break;
    case JOB_CONDITION_READ:
        finishConditionRead();
        break;
    case JOB_POLL:
        rotatePollList();
        break;
    case JOB_RECIPE_WRITE:
        finishRecipeBlock(RECIPE_WRITE_FLAG);
        break;
    case JOB_RECIPE_READ:
        finishRecipeBlock(RECIPE_READ_FLAG);
        break;
    default:
        break;
    }
}
