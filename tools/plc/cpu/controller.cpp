#include "cpu/controller.h"

#include <vector>

namespace plc {

namespace {

// Words of AR.
enum : unsigned {
    AR_LOG          = 100, // 20 records of five words each
    AR_LOG_COUNT    = 300,
    AR_ERROR_CODE   = 400,
    AR_FATAL        = 401,
    AR_NON_FATAL    = 402,
    AR_HOLD         = 500, // bit 12: a change of mode clears nothing
    AR_HOLD_IO_BIT  = 12
};

void clearWords(Memory &memory, AreaIndex area)
{
    for (unsigned i = 0; i < memory.size(area); ++i)
        memory.setWord(area, i, 0);
}

void clearTimers(Memory &memory)
{
    clearWords(memory, AREA_T);
    for (unsigned i = 0; i < memory.size(AREA_T); ++i)
        memory.setFlag(AREA_T, i, false);
}

} // namespace

std::string modeName(Mode mode)
{
    if (mode == Mode::PROGRAM)
        return "program";
    return mode == Mode::MONITOR ? "monitor" : "run";
}

bool parseMode(const std::string &name, Mode *mode)
{
    for (const Mode candidate : {Mode::PROGRAM, Mode::MONITOR, Mode::RUN}) {
        if (modeName(candidate) != name)
            continue;
        *mode = candidate;
        return true;
    }
    return false;
}

void Controller::fit(const AreaSizes &sizes)
{
    memory = Memory(sizes);
    memory.follow([this] { return clock.now(); });
}

void Controller::changeMode(Mode wanted)
{
    const bool isStartOrStop = (mode == Mode::PROGRAM) != (wanted == Mode::PROGRAM);
    mode = wanted;
    if (!isStartOrStop || memory.bit(AREA_AR, AR_HOLD, AR_HOLD_IO_BIT))
        return;
    clearWords(memory, AREA_CIO);
    clearWords(memory, AREA_WR);
    clearTimers(memory);
}

void Controller::raise(const CpuError &error)
{
    if (errors.add(error))
        log.add({error.code(), time()});
    showErrors();
    showLog();
}

bool Controller::dismiss(unsigned code)
{
    const bool stood = errors.remove(code);
    showErrors();
    return stood;
}

void Controller::dismissAll()
{
    errors.removeAll();
    showErrors();
}

EndCode Controller::reset(unsigned code)
{
    const unsigned wanted = code == RESET_PRESENT ? errors.worstCode() : code;
    EndCode end = END_NORMAL;
    const std::vector<CpuError> standing = errors.all();
    for (const CpuError &error : standing) {
        if (wanted != RESET_ALL && wanted != error.code())
            continue;
        if (error.kind->hasCause)
            end = END_ERROR_REMAINS;
        else
            errors.remove(error.code());
    }
    showErrors();
    return end;
}

void Controller::clearLog()
{
    log.clear();
    showLog();
}

void Controller::showErrors()
{
    memory.setWord(AREA_AR, AR_ERROR_CODE, errors.worstCode());
    memory.setWord(AREA_AR, AR_FATAL, errors.fatalWord());
    memory.setWord(AREA_AR, AR_NON_FATAL, errors.nonFatalWord());
}

void Controller::showLog()
{
    const unsigned RECORD_WORDS = 5;
    memory.setWord(AREA_AR, AR_LOG_COUNT, static_cast<unsigned>(log.all().size()));
    for (unsigned i = 0; i < ErrorLog::RECORDS_MAX; ++i) {
        const Bytes bytes = i < log.all().size() ? recordBytes(log.all()[i]) : Bytes();
        for (unsigned word = 0; word < RECORD_WORDS; ++word)
            memory.setWord(AREA_AR, AR_LOG + i * RECORD_WORDS + word, Slice(bytes).get16(2 * word));
    }
}

} // namespace plc
