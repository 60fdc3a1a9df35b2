#include "omron_fins_ethernet.h"

#include "address/register_table.h"
#include "address/wrapping.h"

#include <QtCore/QStringList>

// The driver object, and the functions that describe and configure it.

/// The fields of the property string, separated by '#'.
enum PropertyField {
    PROPERTY_STATION_NO          = 0,
    PROPERTY_WRITE_DIRECT        = 1,
    PROPERTY_FIELD_2             = 2,
    PROPERTY_RETRY_LIMIT         = 3,
    PROPERTY_MAX_WORDS_PER_FRAME = 4,
    PROPERTY_FIELDS              = 5
};

// Constructed after the register tables; see register_table.cpp.
__attribute__((init_priority(1003))) omron_fins_ethernet driver;

// The members not named here are zero because `driver` lives in static storage.
omron_fins_ethernet::omron_fins_ethernet()
{
    dataAreas.clear();
    jobCount = 0;
    commFailed = 0;
    recipeIndex = 0;
    connected = 0;
    for (int i = 0; i < 3; ++i) {
        srcNode[i] = 0;
        dstNode[i] = 0;
    }
    sid = 0;
    reserved3 = 0;
}

omron_fins_ethernet::~omron_fins_ethernet() {}

void intf_getProtocolType(qint32 *type)
{
    *type = 1;
}

void intf_getDriverParameter(QString &parameter)
{
    parameter = QLatin1String("0,9600,8,NONE,1,0,1,192.168.1.99,9600,omron_fins_ethernet,");
    for (int i = 0; i < REG_COUNT - 1; ++i)
        parameter += REG_LIST[i] + QLatin1Char(',');
    parameter += REG_LIST[REG_COUNT - 1];
}

void intf_getDriverPropertyPage(QString &page)
{
    // Deliberate: the page with its PLC type is overwritten by the one without entries, since a CV-series PLC is
    // addressed like every other.
    page = QLatin1String("0_1,plc type_1_2_cs/cj,plc type_1_2_cv");
    page = QLatin1String("0_0");
}

void intf_SetDriverPropertyPage(QString &page)
{
    // Deliberate: nothing is accepted from the page.
    page = QLatin1String("");
}

void intf_setAddrValueChangeCallBack(ValueChangeCallback callback)
{
    driver.valueChangeCallback = callback;
}

/// Takes the five settings from `property`; a text with fewer fields leaves them as they are.
static void storeProperties(const char *property)
{
    const QStringList fields = QString::fromLatin1(property).split(QLatin1Char('#'));
    if (fields.size() < PROPERTY_FIELDS)
        return;

    driver.stationNo        = fields.at(PROPERTY_STATION_NO).toInt();
    driver.writeDirect      = fields.at(PROPERTY_WRITE_DIRECT).toInt();
    driver.propertyField2   = fields.at(PROPERTY_FIELD_2).toInt();
    driver.retryLimit       = fields.at(PROPERTY_RETRY_LIMIT).toInt();
    driver.maxWordsPerFrame = fields.at(PROPERTY_MAX_WORDS_PER_FRAME).toInt();
}

/// Empties the queues and the data image, and makes the job state that of an idle, error-free driver. The recipe plan
/// and the link's state are not touched.
static void resetJobs()
{
    driver.readList.clear();
    driver.writeList.clear();
    driver.conditionReadList.clear();
    driver.dataAreas.clear();

    driver.jobType         = 0;
    driver.jobCount        = 0;
    driver.wordsPerFrame   = driver.maxWordsPerFrame;
    driver.reserved0       = 0;
    driver.maxBitsPerFrame = wrapMul(driver.maxWordsPerFrame, 8);
    driver.errCount        = 0;
    driver.commFailed      = 0;
    driver.frameList.clear();
    driver.reserved1       = 0;
    driver.reserved2       = 1;
}

/// The runtime's address as a pointer, zero-extended where pointers are wider.
static void *runtimeAddress(qint32 address)
{
    return reinterpret_cast<void *>(static_cast<quintptr>(static_cast<quint32>(address)));
}

qint32 intf_initProperty(qint32 runtimeBlock, qint32 arg2, qint32 recipeBuffer, qint32 *status, const char *property,
                         qint32 runtimeMutex)
{
    *status = 2;
    storeProperties(property);
    driver.runtimeBlock = static_cast<quint8 *>(runtimeAddress(runtimeBlock));
    driver.initArg2     = arg2;
    driver.recipeBuffer = static_cast<quint16 *>(runtimeAddress(recipeBuffer));
    driver.runtimeMutex = static_cast<QMutex *>(runtimeAddress(runtimeMutex));
    resetJobs();
    return 1;
}
