#include "address/register_table.h"
#include "data/write_completion.h"
#include "fins/frame_builder.h"
#include "poll/recipe.h"

#include <algorithm>

// The choice of the next request: stop and wait, one request in flight.

/// Jobs since the last poll read, below which a write or a conditional read still goes ahead of the poll.
enum {
    WRITES_BEFORE_POLL          = 5,
    CONDITION_READS_BEFORE_POLL = 3
};

/// What the runtime asks for in the shared block.
struct RecipeRequest {
    bool write;
    bool read;
};

static RecipeRequest recipeRequest()
{
    RecipeRequest request = { false, false };
    if (driver.runtimeBlock == nullptr || driver.runtimeMutex == nullptr)
        return request;

    driver.runtimeMutex->lock();
    request.write = driver.runtimeBlock[RECIPE_WRITE_FLAG] == 1;
    request.read  = driver.runtimeBlock[RECIPE_READ_FLAG] == 1;
    driver.runtimeMutex->unlock();
    return request;
}

/// Deliberate: while a transfer is over but its request stands, the last job is sent once more.
static void repeatJob()
{
    switch (driver.jobType) {
    case JOB_WRITE:
    case JOB_RECIPE_WRITE:
        getWriteFrame(driver.jobVar);
        break;
    case JOB_CONDITION_READ:
    case JOB_POLL:
    case JOB_RECIPE_READ:
        getReadFrame(driver.jobVar);
        break;
    default:
        break;
    }
}

static void startRecipeBlock(JobType jobType)
{
    if (driver.recipeIndex >= driver.recipeBlocks.size()) {
        repeatJob();
        return;
    }

    const bool write = jobType == JOB_RECIPE_WRITE;
    rcpAddrToVar(driver.recipeBlocks.at(driver.recipeIndex), driver.jobVar, write ? 1 : 0);
    driver.jobType = jobType;
    if (write)
        getWriteFrame(driver.jobVar);
    else
        getReadFrame(driver.jobVar);
}

/// Assigns all fields. The buffer is copied on its own, since assigning a record copies arrays piecemeal.
static void setJob(const VARIABLE &request)
{
    driver.jobVar.requestId  = request.requestId;
    driver.jobVar.requestTag = request.requestTag;
    setName(driver.jobVar.regType, request.regType);
    driver.jobVar.address    = request.address;
    driver.jobVar.count      = request.count;
    std::copy(request.value, request.value + VALUE_BUFFER_SIZE, driver.jobVar.value);
}

static void copyFrame(const FRAME_PRO &from, FRAME_PRO &to)
{
    std::copy(from.frame, from.frame + VALUE_BUFFER_SIZE, to.frame);
    to.sendLen       = from.sendLen;
    to.rcvLen        = from.rcvLen;
    to.dataPos       = from.dataPos;
    to.dataLen       = from.dataLen;
    to.reservedField = from.reservedField;
    to.requestId     = from.requestId;
    to.requestTag    = from.requestTag;
    setName(to.regType, from.regType);
    to.address       = from.address;
    to.count         = from.count;
    std::copy(from.value, from.value + VALUE_BUFFER_SIZE, to.value);
}

static void startWrite()
{
    setJob(driver.writeList.at(0));
    driver.jobType = JOB_WRITE;
    ++driver.jobCount;
    getWriteFrame(driver.jobVar);
}

static void startConditionRead()
{
    setJob(driver.conditionReadList.at(0));
    driver.jobType = JOB_CONDITION_READ;
    ++driver.jobCount;
    getReadFrame(driver.jobVar);
}

static void startPoll()
{
    setJob(driver.readList.at(0));
    driver.jobType = JOB_POLL;
    driver.jobCount = 0;
    getReadFrame(driver.jobVar);
}

static void goIdle()
{
    driver.jobCount = 0;
    driver.jobType = JOB_NONE;
    driver.frameList.clear();
}

/// Starts the most urgent job. Its element stays in its list until the job completes.
static void startJob()
{
    const RecipeRequest recipe = recipeRequest();
    if (recipe.write)
        startRecipeBlock(JOB_RECIPE_WRITE);
    else if (recipe.read)
        startRecipeBlock(JOB_RECIPE_READ);
    else if (!driver.writeList.isEmpty() && driver.jobCount < WRITES_BEFORE_POLL)
        startWrite();
    else if (!driver.conditionReadList.isEmpty() && driver.jobCount < CONDITION_READS_BEFORE_POLL)
        startConditionRead();
    else if (!driver.readList.isEmpty())
        startPoll();
    else
        goIdle();
}

qint32 intf_getSendFrame(FRAME_PRO *out)
{
    if (driver.frameList.isEmpty())
        startJob();
    if (driver.frameList.isEmpty())
        return 0;

    copyFrame(driver.frameList.at(0), *out);
    return 1;
}
