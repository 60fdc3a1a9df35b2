#include "neighbour_globals.h"

// Without `extern` declarations these would be reported as missing; they are visible on purpose.
extern int         driver[64];
extern const char *REG_LIST[12];
extern int         AREA_CODE_CS_CJ[12];
extern const char *ADDRESS_RANGE_FINS[13];
int                getSSID();
void               connectToServer();
void               changePLCModeToMonitor();
void               dealListWhenFinish();

int         driver[64] = {0x5A5A5A5A, 1, 2, 3};
const char *REG_LIST[12] = {"neighbour"};
int         AREA_CODE_CS_CJ[12] = {-1, -2, -3};
const char *ADDRESS_RANGE_FINS[13] = {"neighbour,0,0,0,0"};

static int calls = 0;

int  getSSID() { return ++calls; }
void connectToServer() { ++calls; }
void changePLCModeToMonitor() { ++calls; }
void dealListWhenFinish() { ++calls; }

static bool textsAreUntouched()
{
    for (int i = 0; i < 12; ++i) {
        const bool isFirst = i == 0;
        if ((REG_LIST[i] != nullptr) != isFirst || (ADDRESS_RANGE_FINS[i] != nullptr) != isFirst)
            return false;
    }
    return REG_LIST[0][0] == 'n' && ADDRESS_RANGE_FINS[0][0] == 'n' && ADDRESS_RANGE_FINS[12] == nullptr;
}

bool neighbourGlobalsAreUntouched()
{
    for (int i = 4; i < 64; ++i) {
        if (driver[i] != 0)
            return false;
    }
    return driver[0] == 0x5A5A5A5A && driver[1] == 1 && driver[2] == 2 && driver[3] == 3 && AREA_CODE_CS_CJ[0] == -1
        && AREA_CODE_CS_CJ[1] == -2 && AREA_CODE_CS_CJ[2] == -3 && textsAreUntouched();
}

int neighbourCalls() { return calls; }

const void *neighbourDriver() { return driver; }

const void *neighbourRegList() { return REG_LIST; }
