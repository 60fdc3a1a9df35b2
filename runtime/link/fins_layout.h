#ifndef RUNTIME_LINK_FINS_LAYOUT_H
#define RUNTIME_LINK_FINS_LAYOUT_H

#include <cstdint>

// Where the fields of a frame lie, for all that looks at its bytes. Numbers are big-endian.

// FINS/TCP header: offset, size in bytes, field.
enum {
    TCP_MAGIC   = 0,  // 4  "FINS"
    TCP_LENGTH  = 4,  // 4  number of bytes behind this field
    TCP_COMMAND = 8,  // 4  0, 1: node addresses, asked for and given; 2: a FINS frame; 3: an error notice
    TCP_ERROR   = 12, // 4  error code
    TCP_SIZE    = 16,

    // Node addresses.
    CLIENT_NODE    = 16, // 4
    SERVER_NODE    = 20, // 4  reply only
    HANDSHAKE_SIZE = 24, //    the reply ends here

    // FINS header.
    FINS_ICF     = 16, // 1  information control field
    FINS_RSV     = 17, // 1
    FINS_GCT     = 18, // 1  gateway count
    FINS_DNA     = 19, // 1  destination: network
    FINS_DA1     = 20, // 1  node
    FINS_DA2     = 21, // 1  unit
    FINS_SNA     = 22, // 1  source: network
    FINS_SA1     = 23, // 1  node
    FINS_SA2     = 24, // 1  unit
    FINS_SID     = 25, // 1  service ID of a command and of its reply
    FINS_COMMAND = 26, // 2  MRC, SRC
    FINS_SIZE    = 28,

    // Response.
    FINS_END   = 28, // 2  end code: MRES, SRES
    REPLY_DATA = 30, // n  of a read; other responses end here

    // Memory Area Read and Write.
    MEM_AREA  = 28, // 1  memory area
    MEM_WORD  = 29, // 2
    MEM_BIT   = 31, // 1
    MEM_COUNT = 32, // 2
    MEM_DATA  = 34, // n  of a write

    // RUN.
    RUN_PROGRAM = 28, // 2
    RUN_MODE    = 30  // 1
};

/// The bit of ICF that makes a frame a response.
constexpr unsigned ICF_RESPONSE = 0x40;

inline std::uint16_t get16(const std::uint8_t *at)
{
    return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
}

inline std::uint32_t get32(const std::uint8_t *at)
{
    return static_cast<std::uint32_t>(get16(at)) << 16 | get16(at + 2);
}

#endif
