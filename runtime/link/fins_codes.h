#ifndef RUNTIME_LINK_FINS_CODES_H
#define RUNTIME_LINK_FINS_CODES_H

#include <cstdint>
#include <string>

// The protocol's error numbers in words.

/// True if an end code, main code in the high byte, means that the command was done. The
/// flags of a CPU unit error (bits 6 and 7) travel in the same two bytes and do not make a command fail; the relay error
/// (bit 15) does, and such a reply has no data.
bool isNormalEnd(std::uint16_t endCode);

/// The end code without the flags of a CPU unit error.
std::uint16_t plainEndCode(std::uint16_t endCode);

/// "a fatal error of the CPU unit" and such: what the flags say; "" for none.
std::string cpuErrorText(std::uint16_t endCode);

/// True if the command was refused since the CPU unit is in PROGRAM, DEBUG or RUN mode.
bool isModeEndCode(std::uint16_t endCode);

/// True if the same request may well succeed a moment later: the network or the PLC is busy, or a relay has failed.
bool isPassing(std::uint16_t endCode);

/// "1103 (address range error)", or the number alone if the code is not a known one. The flags are left out.
std::string endCodeText(std::uint16_t endCode);

/// What to do about an end code, in one line without its end.
std::string endCodeHint(std::uint16_t endCode);

/// "23 (no free node address ...)" for the error code of a FINS/TCP header.
std::string tcpErrorText(std::uint32_t errorCode);
std::string tcpErrorHint(std::uint32_t errorCode);

#endif
