#ifndef FINS_FRAME_BUILDER_H
#define FINS_FRAME_BUILDER_H

#include "omron_fins_ethernet.h"

// The bytes on the wire: layouts of requests and replies, and the builders of the four requests. Multi-byte numbers are
// big-endian. docs/wire.md shows the same in tables.

// FINS/TCP header: offset, size in bytes, field.
enum {
    TCP_MAGIC     = 0,  // 4  "FINS"
    TCP_LENGTH    = 4,  // 4  bytes that follow this field
    TCP_COMMAND   = 8,  // 4  0 node address data send, client to server; 2 FINS frame send
    TCP_ERROR     = 12, // 4  error code, 0
    TCP_BODY      = 16, // n  handshake body or FINS frame

    // Node address data send, body of request and reply.
    NODE_CLIENT   = 16, // 4  client node address; 0 asks the server for one
    NODE_REQUEST  = 20, //    the request ends here
    NODE_SERVER   = 20, // 4  server node address
    NODE_REPLY    = 24, //    the reply ends here

    // FINS header.
    FINS_ICF      = 16, // 1  information control field
    FINS_RSV      = 17, // 1  reserved
    FINS_GCT      = 18, // 1  gateway count
    FINS_DNA      = 19, // 1  destination network address
    FINS_DA1      = 20, // 1  destination node address
    FINS_DA2      = 21, // 1  destination unit address
    FINS_SNA      = 22, // 1  source network address
    FINS_SA1      = 23, // 1  source node address
    FINS_SA2      = 24, // 1  source unit address
    FINS_SID      = 25, // 1  service ID
    CMD_CODE      = 26, // 2  MRC, SRC

    // Memory Area Read and Write.
    MEM_AREA      = 28, // 1  memory area code
    MEM_WORD      = 29, // 2  word address
    MEM_BIT       = 31, // 1  bit position, 0 for word access
    MEM_COUNT     = 32, // 2  number of items
    MEM_DATA      = 34, // n  data of a write; a read ends here

    // RUN.
    RUN_PROGRAM   = 28, // 2  program number, FFFF
    RUN_MODE      = 30, // 1  operating mode
    RUN_END       = 31, //    the request ends here

    // Reply to a FINS command.
    REPLY_MRES    = 28, // 1  end code, main
    REPLY_SRES    = 29, // 1  end code, sub
    REPLY_DATA    = 30  // n  data of a read; other replies end here
};

/// Advances the service ID (1 to 254, then 0; 255 is never used) and returns it.
int getSSID();

/// Appends the node-address handshake to frameList.
void connectToServer();

/// Appends a Memory Area Read of `request` to frameList, or the handshake instead while not connected.
void getReadFrame(VARIABLE &request);

/// Appends a Memory Area Write of `request`'s values to frameList, or the handshake instead while not connected.
void getWriteFrame(VARIABLE &request);

/// Puts RUN in MONITOR mode at the head of frameList.
void changePLCModeToMonitor();

/// Removes the head of frameList, which must not be empty.
void retireFrame();

/// Byte of a reply of `length` bytes; 0 outside it.
inline quint8 get8(const quint8 *reply, qint32 length, qint32 offset)
{
    return offset >= 0 && offset < length ? reply[offset] : quint8(0);
}

#endif
