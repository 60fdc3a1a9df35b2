#ifndef TESTS_FUZZ_RUNTIME_SIDE_H
#define TESTS_FUZZ_RUNTIME_SIDE_H

#include "fuzz_input.h"
#include "omron_fins_ethernet.h"

#include <memory>

// The runtime's side of the driver, for the targets that play it: the objects that only a runtime can guarantee, calls
// with buffers of exactly the promised size, and what holds after every call whatever was passed.

/// Words of the recipe buffer.
enum { RECIPE_WORDS = 2048 };

/// Makes the driver what it is after loading, the shared block's flags 0, and registers the callback.
void loadDriver();

/// Calls intf_initProperty with the runtime's objects.
void configureDriver(const std::string &property);

/// The words that a nested intf_getData in the callback reads; 0: the callback makes no call.
void setNestedRead(int count);

/// Asks for a recipe write and read, or takes the requests back.
void setRecipeFlags(bool write, bool read);

/// A register type: one of the twelve, one that is none, or any text.
QString typeOf(FuzzInput &input);

/// Asks for the next request, twice, and checks it. Returns whether there is one.
bool takeRequest(FRAME_PRO &request);

/// Hands over a reply and checks result and state. Returns the result of intf_dealRcvFrame.
int giveReply(const std::vector<quint8> &reply);

/// What a PLC answers to `request`: `data` behind the header of a reply, filled up or cut to the length.
std::vector<quint8> replyTo(const FRAME_PRO &request, const std::vector<quint8> &data);

/// Reads values into a buffer of exactly their size, and checks them.
std::vector<quint8> readValues(qint32 requestTag, const QString &regType, qint32 address, qint32 count);

/// What holds whenever no call is running.
void checkState();

#endif
