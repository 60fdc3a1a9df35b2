#ifndef RUNTIME_VALUES_NOTATION_H
#define RUNTIME_VALUES_NOTATION_H

#include <optional>
#include <string>

// Addresses and type names as the PLC's manuals write them, beside the driver's notation: D100 for DM:100, W3.05 for
// WR_bit:3.5, 100.05:4 for CIO_bit:100.5:4, REAL for f32. Capitals only, so that a small d100 is a name.

enum class Notation { DRIVER, MANUAL };

/// The manuals' AREA ADDRESS[.BIT][:COUNT] in the driver's notation; nothing for any other text. Whether there is such
/// an address is the driver's to say.
std::optional<std::string> driverItem(const std::string &text);

/// An item of the driver's notation, TYPE:ADDRESS[:COUNT], as the manuals write it. A bit has two digits.
std::string manualItem(const std::string &item);

/// The driver's name of a type of the manuals, such as "f32" for REAL; nothing for any other text.
std::optional<std::string> driverType(const std::string &name);

/// The manuals' type of a single bit, which is none of the driver's data types.
constexpr const char *BIT_TYPE = "BOOL";

/// "BOOL, INT, ...", the types of the manuals.
std::string manualTypes();

#endif
