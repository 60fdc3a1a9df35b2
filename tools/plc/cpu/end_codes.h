#ifndef PLC_CPU_END_CODES_H
#define PLC_CPU_END_CODES_H

// End codes of FINS responses (MRES in the high byte, SRES in the low byte) and error codes of FINS/TCP headers, those
// that the simulator gives.

namespace plc {

enum EndCode : unsigned {
    END_NORMAL             = 0x0000,
    END_NODE_ABSENT        = 0x0201, // destination node not in the network
    END_UNIT_ABSENT        = 0x0202, // no unit with the destination's unit address
    END_UNKNOWN_COMMAND    = 0x0401,
    END_NO_ROUTING_TABLE   = 0x0502, // destination network is not the local one
    END_COMMAND_TOO_LONG   = 0x1001,
    END_COMMAND_TOO_SHORT  = 0x1002,
    END_COUNT_MISMATCH     = 0x1003, // number of items does not match the data
    END_NO_AREA            = 0x1101, // memory-area code unknown
    END_START_OUT_OF_RANGE = 0x1103, // first address is not in the area
    END_RANGE_EXCEEDED     = 0x1104, // last address is not in the area
    END_SIZES_DIFFER       = 0x1105, // items of source and destination have not the same size
    END_NO_PROGRAM         = 0x1106, // no program of that number
    END_RESPONSE_TOO_LONG  = 0x110B,
    END_PARAMETER_ERROR    = 0x110C,
    END_READ_ONLY          = 0x2101,
    END_STOPPED            = 0x2202, // not possible while the CPU unit is stopped
    END_PROGRAM_MODE       = 0x2203, // not possible in the operating mode: PROGRAM
    END_RUN_MODE           = 0x2206, // not possible in the operating mode: RUN
    END_ERROR_REMAINS      = 0x260B, // the error cannot be cleared, its cause is still there
    END_NO_ACCESS_RIGHT    = 0x3001  // another device holds the access right
};

/// Bits of an end code that tell of an error of the CPU unit, fatal (0080) or not (0040). They come with whatever the
/// rest of the code says, a normal end and its data included. The relay error, bit 15, is a failure and none of them.
enum : unsigned { END_FLAG_NON_FATAL = 0x0040, END_FLAG_FATAL = 0x0080, END_FLAGS = 0x00C0 };

enum TcpError : unsigned {
    TCP_OK                  = 0x00,
    TCP_NOT_FINS            = 0x01, // the header does not begin with "FINS"
    TCP_LENGTH              = 0x02, // length above the bounds of the command
    TCP_UNSUPPORTED_COMMAND = 0x03,
    TCP_ALL_IN_USE          = 0x20, // all connections are in use
    TCP_NODE_IN_USE         = 0x21, // the node is connected already
    TCP_ADDRESS_PROTECTED   = 0x22, // the client's IP address is not among those that are let in
    TCP_NODE_OUT_OF_RANGE   = 0x23, // client node address out of range
    TCP_NODE_IS_SERVER      = 0x24, // client and server have the same node address
    TCP_NO_NODE_LEFT        = 0x25, // all node addresses for automatic allocation are in use
    TCP_TOO_SHORT           = 0x100 // length below the bounds: no code says so, the connection ends without one
};

} // namespace plc

#endif
