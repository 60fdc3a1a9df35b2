#include "fuzz_input.h"
#include "service/plc_errors.h"

// The answers to service requests: any bytes are taken for each of them, and what is decoded can be shown.

namespace {

void requireShown(const std::string &text, const char *what)
{
    for (const char c : text)
        require(c >= 0x20 && c < 0x7F, what);
}

void checkTime(const std::optional<PlcTime> &time)
{
    if (!time)
        return;
    require(plcTimeText(*time).size() == 19, "a time is as long as every other");
    require(time->year >= 1998 && time->year <= 2097 && time->month >= 1 && time->month <= 12, "a month of a year");
}

void checkLog(const std::vector<std::uint8_t> &bytes)
{
    const std::optional<ErrorLog> log = decodeErrorLog(bytes);
    if (!log)
        return;
    require(bytes.size() == 6 + 10 * log->records.size(), "every byte belongs to a record");
    for (const LoggedError &record : log->records) {
        checkTime(record.time);
        requireShown(loggedText(record), "a record can be shown");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<std::uint8_t> bytes(data, data + size);
    if (const auto controller = decodeController(bytes)) {
        requireShown(controller->model, "a model can be shown");
        requireShown(controller->version, "a version can be shown");
    }
    if (const auto status = decodeStatus(bytes)) {
        requireShown(status->errorText, "a message can be shown");
        require(fatalTexts(status->fatal).size() <= 16 && nonFatalTexts(status->nonFatal).size() <= 16, "a text for a bit");
    }
    decodeCycleTime(bytes);
    checkTime(decodeClock(bytes));
    checkLog(bytes);
    return 0;
}
