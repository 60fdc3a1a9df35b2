#ifndef OMRON_FINS_ETHERNET_H
#define OMRON_FINS_ETHERNET_H

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

// The driver's interface to a panel runtime: the records that travel between the two, the change callback, the
// driver object and the eighteen exported functions, in the order in which a runtime calls them.
//
// Register types are named: "CIO_bit", "WR_bit", "HR_bit", "AR_bit", "DM_bit", "CIO", "WR", "HR", "AR", "T", "C",
// "DM". A name ending in "_bit" is a bit type: its addresses are bit addresses, word * 16 + bit, and its counts are
// bits. For every other type addresses and counts are in 16-bit words.
//
// Values are bytes: a word is two bytes, low byte first; a bit is one byte, 0 or 1. Only frames are big-endian.
//
// Threads: the driver has no thread and no lock. Each function runs on the caller's thread, and no two of them may run
// at the same time, on any threads. The one exception: the change callback may call intf_getData.

/// Size in bytes of the value and frame buffers of the records.
enum { VALUE_BUFFER_SIZE = 1024 };

/// One read or write request.
struct VARIABLE {
    qint32  requestId;                // the runtime's identifier of the request; 4 for the cyclic poll
    qint32  requestTag;               // the runtime's tag of the variable, first key of the data image
    QString regType;                  // register type name
    qint32  address;                  // word address, or bit address for a bit type
    qint32  count;                    // words, or bits for a bit type
    quint8  value[VALUE_BUFFER_SIZE]; // words low byte first, bits one byte each
};

/// One address block that the runtime asks to watch or to read, and the unit of merging.
struct KEY_ADDRESS {
    QString name;                     // carried unchanged
    qint32  keyField2;                // carried unchanged
    qint32  bufferOffset;             // recipes only: offset into the recipe buffer, in words
    qint32  requestTag;               // the runtime's tag of the variable
    QString regType;                  // register type name
    QString keyField6;                // carried unchanged
    qint32  address;                  // word address, or bit address for a bit type
    qint32  dataKind;                 // -1: a conditional read is cut by the bit limit, else by the word limit
    qint32  count;                    // words, or bits for a bit type
    quint8  data[VALUE_BUFFER_SIZE];  // carried unchanged; the constructor leaves it unset

    KEY_ADDRESS() : keyField2(0), bufferOffset(0), requestTag(0), address(0), dataKind(0), count(0) {}
};

/// One FINS/TCP request, with what its reply must look like and the variable that it serves.
struct FRAME_PRO {
    quint8  frame[VALUE_BUFFER_SIZE]; // the request, FINS/TCP header first
    qint32  sendLen;                  // bytes of the frame to send
    qint32  rcvLen;                   // exact length of the expected reply in bytes
    qint32  dataPos;                  // offset of the data in the reply: 30 for reads, 0 for other requests
    qint32  dataLen;                  // data bytes in the reply: 2 * count for reads, 0 for other requests
    qint32  reservedField;            // 0
    qint32  requestId;                // this and the fields below: as in the VARIABLE; empty or 0 in handshakes
    qint32  requestTag;               // and mode changes
    QString regType;
    qint32  address;
    qint32  count;
    quint8  value[VALUE_BUFFER_SIZE];
};

/// One PLC word of the data image, keyed by requestTag, regType and address.
struct _DATA_ {
    quint8  rcvFlag;                  // cleared whenever PLC data arrive; never set
    quint8  writePending;             // 1 while a written value is not yet confirmed: reads then return writeValue
    qint32  pendingBits;              // bit n: a bit write of bit n is not yet completed
    qint32  wordMonitor;              // bit 0: the runtime watches the word
    qint32  bitMonitor;               // bit n, 0 to 15: the runtime watches bit n of the word
    qint32  requestTag;               // key 1
    QString regType;                  // key 2: a word type name, never a bit type
    qint32  address;                  // key 3: word address
    quint8  plcValue[4];              // bytes 0 and 1: the word as last read from the PLC, low byte first
    quint8  writeValue[4];            // bytes 0 and 1: the word as last written by the panel, low byte first
};

/// One recipe variable.
struct _RCP_VAR_PRO {
    qint32  stationNo;                // only variables of the configured station are kept
    qint32  requestTag;               // the runtime's tag of the variable
    QString regType;                  // register type name
    qint32  address;                  // first address
    qint32  count;                    // words
    qint32  bufferOffset;             // offset of the first word in the recipe buffer, in words
    qint32  rcpField7;                // not used by the driver
};

/// The runtime's change notification. It carries no value: read it with intf_getData. Its forms:
///   (stationNo, requestTag, word type, word address)   a watched word changed
///   (stationNo, requestTag, bit type, bit address)     a watched bit changed, or a bit write ended
///   (-1, -1, "-1", 0 or -1)                            a conditional read ended well, or failed
///   (0, -1, "RWI", word index)                         a recipe word was stored into the recipe buffer
/// It runs on the thread that called into the driver, before that call returns, and never while the runtime's mutex is
/// held by the driver. The only driver function that it may call is intf_getData, which then still sees the value
/// from before the change.
typedef void (*ValueChangeCallback)(qint32 stationNo, qint32 requestTag, QString regType, qint32 address);

/// All state of the driver. There is one object, `driver`; it is not visible outside the library.
class omron_fins_ethernet {
public:
    omron_fins_ethernet();
    ~omron_fins_ethernet();

    ValueChangeCallback   valueChangeCallback; // called unchecked
    qint32                stationNo;           // property field 0
    qint32                writeDirect;         // property field 1: nonzero, writes stay in the data image
    qint32                propertyField2;      // property field 2: stored only
    qint32                retryLimit;          // property field 3: rejected replies in a row that drop the link
    qint32                maxWordsPerFrame;    // property field 4: largest merged block, in words
    quint8               *runtimeBlock;        // the runtime's shared block, guarded by runtimeMutex
    qint32                initArg2;            // stored only
    quint16              *recipeBuffer;        // the runtime's recipe buffer, words low byte first
    QMutex               *runtimeMutex;        // the runtime's mutex
    QList<VARIABLE>       readList;            // cyclic poll, next block first
    QList<VARIABLE>       writeList;           // pending writes, oldest first; at most 513
    QList<VARIABLE>       conditionReadList;   // pending conditional reads, oldest first; at most 513
    QList<_DATA_>         dataAreas;           // the data image, in creation order
    QVector<_RCP_VAR_PRO> recipeVars;          // recipe variables of this station, sorted
    QVector<_RCP_VAR_PRO> recipeBlocks;        // merged recipe blocks
    QList<qint32>         recipeBlockStart;    // per block: index in recipeVars of its first variable
    VARIABLE              currentRead;         // last piece of the latest conditional read
    VARIABLE              jobVar;              // request of the job in progress
    qint32                jobType;             // kind of the job in progress, see JobType in write_completion.h
    qint32                jobCount;            // writes and conditional reads since the last poll read
    qint32                reserved0;           // reset only
    qint32                errCount;            // rejected replies in a row
    qint32                maxBitsPerFrame;     // cut of conditional bit reads: maxWordsPerFrame * 8
    qint32                wordsPerFrame;       // cut of writes and conditional word reads: maxWordsPerFrame
    qint32                commFailed;          // 1 from the loss of the link until the next accepted reply
    qint32                reserved1;           // reset only
    qint32                reserved2;           // reset only
    QList<FRAME_PRO>      frameList;           // requests to send; the head is in flight
    qint32                recipeIndex;         // next block of the recipe transfer
    quint8                connected;           // 1 once the node-address exchange has succeeded
    qint32                srcNode[3];          // SNA, SA1, SA2
    qint32                dstNode[3];          // DNA, DA1, DA2
    quint8                sid;                 // service ID of the most recently built frame
    qint32                reserved3;           // reset only

private:
    Q_DISABLE_COPY(omron_fins_ethernet)
};

extern omron_fins_ethernet driver;

extern "C" {

// ---- Description and configuration -------------------------------------------------------------------------------

/// Stores 1, the protocol type, into `type`.
Q_DECL_EXPORT void intf_getProtocolType(qint32 *type);

/// Assigns the default connection parameters to `parameter`: ten comma-separated fields (among them the PLC's address
/// 192.168.1.99 and port 9600), then the twelve register type names.
Q_DECL_EXPORT void intf_getDriverParameter(QString &parameter);

/// Assigns "0_0", a property page without entries, to `page`.
Q_DECL_EXPORT void intf_getDriverPropertyPage(QString &page);

/// Accepts nothing from `page` and empties it.
Q_DECL_EXPORT void intf_SetDriverPropertyPage(QString &page);

/// Registers the change callback, which must not be null when a value function or intf_dealRcvFrame runs. The driver
/// calls it unchecked.
Q_DECL_EXPORT void intf_setAddrValueChangeCallBack(ValueChangeCallback callback);

/// Configures the driver and empties its queues, its poll list and its data image. Node addresses, link state and
/// recipe plan stay. Sets `status` to 2. Returns 1.
///   runtimeBlock   address of the runtime's shared block, at least 60117 bytes. Byte 60115 = 1 requests a recipe write,
///                  byte 60116 = 1 a recipe read; the driver clears the byte when the transfer has ended, well or not.
///   arg2           stored only
///   recipeBuffer   address of the recipe buffer, 16-bit words, low byte first
///   property       Latin-1, five numbers separated by '#': station number, direct-write switch, ignored, retry limit,
///                  maximum words per frame. A field that is no number counts as 0, fields beyond the fifth are
///                  ignored, and with fewer than five fields all five settings stay as they were.
///   runtimeMutex   address of a QMutex, not recursive or recursive, that guards the two bytes of the shared block
/// The three addresses are 32-bit and zero-extended, so on a 64-bit machine the three objects lie below 4 GiB. They
/// stay the runtime's and must outlive the last call into the driver.
Q_DECL_EXPORT qint32 intf_initProperty(qint32 runtimeBlock, qint32 arg2, qint32 recipeBuffer, qint32 *status,
                                       const char *property, qint32 runtimeMutex);

// ---- Address entry: these five read fixed tables only, and may be called before intf_initProperty ----------------

/// Checks an address that a user typed, and stores it into `address`. `addrText` is a word number, or word.bit with
/// bits 0 to 9 written with one digit. `count` is the run's length in words or bits; `wordAccess` is 0 for a bit
/// variable and nonzero for a word variable. Returns
///   0  valid, or the type is unknown (then `address` is untouched)
///   1  bit variable with a word type or the reverse (`address` untouched)
///   2  the first or last item lies outside the type's range
///   4  malformed text (`address` becomes 0 for a word type and stays for a bit type)
Q_DECL_EXPORT qint32 intf_checkAddrValidity(QString regType, QString addrText, qint32 *address, qint32 count,
                                            qint32 wordAccess);

/// The same check, with `dataKind` -1 for a bit variable and any other value for a word variable. `mode` 1 and 2 need
/// a writable type; returns 6 where it is not (every type is writable at present), else as intf_checkAddrValidity.
Q_DECL_EXPORT qint32 intf_checkAddr(QString regType, QString addrText, qint32 *address, qint32 dataKind, qint32 count,
                                    qint32 mode);

/// Appends to `names` the bit types (`type` 0) or the word types (`type` 1). Returns 1, or 0 for any other `type`.
Q_DECL_EXPORT qint32 intf_getRegListByType(qint32 type, QList<QString> &names);

/// Appends to `fields` the five fields of the type's range: notation, minimum, maximum, kind ("0" bits, "1" words),
/// writable ("1"). Appends nothing for an unknown type. Returns 0.
Q_DECL_EXPORT qint32 intf_getRegDiscription(QString regType, QList<QString> &fields);

/// Appends the addresses of `copies` copies of a variable, `step` apart from `start`, to `addresses` and their texts to
/// `texts`. A `step` below 1 counts as 1, except -2, which is 2 for word types. Addresses above the type's maximum
/// become the maximum. Returns 1, 2 if an address was limited in this way, 0 for an unknown type.
Q_DECL_EXPORT qint32 intf_multiCopy(QString regType, qint32 start, qint32 copies, qint32 step, QVector<QString> &texts,
                                    QVector<qint32> &addresses);

// ---- Plans: after intf_initProperty, and again whenever the set changes ------------------------------------------

/// Watches `addresses` (requestTag, regType, address and count of each item are used) and replaces the cyclic poll.
/// The list is rewritten into the merged blocks. Returns the number of blocks polled.
Q_DECL_EXPORT qint32 intf_addrMerge(QList<KEY_ADDRESS> &addresses);

/// Replaces the recipe plan by those of `vars` whose stationNo is the configured one. `vars` is not changed. Not to be
/// called during a recipe transfer. Returns the number of variables kept.
Q_DECL_EXPORT qint32 intf_setRcpAddress(QVector<_RCP_VAR_PRO> &vars);

// ---- Communication ---------------------------------------------------------------------------------------------

/// Copies the next request into `out`, which the runtime owns. Returns 1, or 0 when there is nothing to send (`out` is
/// then untouched). The runtime sends the first `sendLen` bytes of `frame` and hands the reply to intf_dealRcvFrame;
/// until a reply is accepted every call returns the same request. Locks the runtime's mutex to read the two request
/// bytes.
Q_DECL_EXPORT qint32 intf_getSendFrame(FRAME_PRO *out);

/// Takes the reply to the request last handed out; an empty one stands for a reply that did not come. Assigns a line
/// about the request to `info`, tag#type address(count)(reply bytes), or "" when none was in flight. Calls the
/// change callback; locks the runtime's mutex at the end of a recipe transfer. Returns
///   0  no request was in flight
///   1  accepted
///   2  rejected, and the link is dropped: retryLimit replies in a row were rejected. The runtime reconnects.
///   8  rejected, the same request is handed out again
Q_DECL_EXPORT qint32 intf_dealRcvFrame(QByteArray &reply, QString &info);

// ---- Values ----------------------------------------------------------------------------------------------------

/// Copies values out of the data image into `out`, which the runtime owns: 2 * count bytes for words, low byte first,
/// count bytes for bits, each 0 or 1. A word that was never read nor written is 0; a value that the panel wrote is
/// returned until its write has ended. A `count` below 1 copies nothing. Returns 1.
Q_DECL_EXPORT qint32 intf_getData(qint32 requestTag, QString regType, qint32 address, qint32 count, quint8 *out);

/// Queues a write, cut into pieces of the configured frame size, and shows the values in the data image at once.
/// `data` is read before the call returns: 2 * count bytes for words, low byte first, count bytes for bits (1 sets,
/// any other value clears). A write that waits in the queue is replaced by a newer one of the same tag, type, address
/// and count; with 513 pieces queued the newest replaces the last. Calls the change callback. Returns 1.
Q_DECL_EXPORT qint32 intf_setData(qint32 requestTag, QString regType, qint32 address, qint32 count, const quint8 *data,
                                  qint32 requestId);

/// Queues a read of `item` (requestTag, regType, address, count and dataKind are used), cut like a write, whose end the
/// change callback reports. `item` is not changed. Returns 1.
Q_DECL_EXPORT qint32 intf_addConditionRead(KEY_ADDRESS &item, qint32 requestId);

} // extern "C"

#endif
