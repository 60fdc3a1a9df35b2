#ifndef RUNTIME_VALUES_CODEC_H
#define RUNTIME_VALUES_CODEC_H

#include "common/usage_error.h"

#include <QtCore/QtGlobal>

#include <string>
#include <vector>

// Values as people read them, and back: one codec for everything that is read, written, shown or stored in a file.
//
// Bytes are in the driver's form: a word is two bytes, low byte first; a bit is one byte, 0 or 1.

enum class DataType {
    BIT,    // one bit: 0 or 1
    WORD,   // a word that nobody gave a type: reads as u16, and a write also takes -32768 to -1
    U16,
    S16,
    U32,
    S32,
    U64,
    S64,
    F32,    // IEEE 754, two words
    F64,    // IEEE 754, four words
    BCD16,  // 0 to 9999
    BCD32,  // 0 to 99999999, two words
    HEX,    // 0x0000 to 0xFFFF
    HEX32,  // 0x00000000 to 0xFFFFFFFF, two words
    BITS,   // sixteen digits, bit 15 first, in groups of four
    STRING  // two characters a word, filled up with NUL
};

/// Which word of a number, or which byte of a word of text, comes first: the one of lower or of higher significance.
/// Omron's controllers store the least significant word of a number first, and the first of two characters in the
/// high byte.
enum class Order { LOW, HIGH };

struct OrderDefaults {
    Order words      = Order::LOW;
    Order characters = Order::HIGH;
};

/// The form of a value. What is shown is raw * scale + offset.
struct ValueFormat {
    DataType    type     = DataType::WORD;
    Order       order    = Order::LOW; // of words; of characters for a string
    double      scale    = 1;          // not 0
    double      offset   = 0;
    int         decimals = -1;         // digits behind the point; -1: as many as are needed
    std::string unit;
    std::string typeName = std::string(); // of the manuals, such as REAL, where the type was named so
};

/// A text that is no value of its format: "'TEXT' REASON".
struct ValueError : UsageError {
    ValueError(const std::string &text, const std::string &reason) : UsageError("'" + text + "' " + reason) {}

    /// The same with the item or tag that the value is for: "'NAME=TEXT' REASON".
    UsageError of(const std::string &name) const { return UsageError("'" + name + "=" + (what() + 1)); }
};

/// The most digits behind the point that a format may ask for.
constexpr int DECIMALS_LIMIT = 9;

/// Words of one value; of a string the words of one pair of characters. 1 for a bit.
qint32 wordsPerValue(DataType type);

/// True for the types whose values are numbers, which can have a scale, an offset and decimals.
bool isNumeric(DataType type);

/// True for the types whose texts are hexadecimal.
bool isHex(DataType type);

/// "u16, s16, ..." as parseFormat takes them.
std::string dataTypeNames();

/// Reads TYPE, TYPE-low or TYPE-high, such as "f32" or "REAL-high"; without an order it is that of `orders`. Throws
/// UsageError, also for a type of bits.
ValueFormat parseFormat(const std::string &text, const OrderDefaults &orders);

/// "low" or "high". Returns false for anything else, then `order` is untouched.
bool parseOrder(const std::string &text, Order &order);

/// The text that parseFormat reads, as it was given, with the order where it is not Omron's. "" for a bit and for a word
/// without a type.
std::string formatText(const ValueFormat &format);

/// The bytes of `texts`, one value each, a string exactly one, of `words` words (0: as many as it needs). Throws
/// ValueError, which says what fits, for every text that does not fit: with a scale the nearest step is taken.
std::vector<quint8> encodeValues(const ValueFormat &format, const std::vector<std::string> &texts, qint32 words = 0);

/// Value number `index` of `bytes`. A word that is no BCD number reads as "no-bcd:0x12AB". A string has no single
/// values.
std::string decodeValue(const ValueFormat &format, const std::vector<quint8> &bytes, std::size_t index);

/// All values of `bytes`, separated by spaces, without the unit. A string is quoted: a quote, a backslash and what is
/// no printable ASCII character is written \", \\ or \xNN, and NULs at the end are left out.
std::string decodeValues(const ValueFormat &format, const std::vector<quint8> &bytes);

#endif
