#include "data/write_completion.h"
#include "fins/frame_builder.h"
#include "poll/recipe.h"

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

static void startWrite()
{
    driver.jobVar = driver.writeList.at(0);
    driver.jobType = JOB_WRITE;
    ++driver.jobCount;
    getWriteFrame(driver.jobVar);
}

static void startConditionRead()
{
    driver.jobVar = driver.conditionReadList.at(0);
    driver.jobType = JOB_CONDITION_READ;
    ++driver.jobCount;
    getReadFrame(driver.jobVar);
}

static void startPoll()
{
    driver.jobVar = driver.readList.at(0);
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

    *out = driver.frameList.at(0);
    return 1;
}
