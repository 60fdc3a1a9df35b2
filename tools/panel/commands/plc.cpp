#include "commands/plc.h"

#include "commands/confirmation.h"
#include "commands/ending.h"
#include "commands/plc_facts.h"
#include "common/usage_error.h"
#include "link/fins_codes.h"
#include "link/host_port.h"
#include "session/ask.h"

#include <algorithm>
#include <iostream>

namespace {

// What the driver polls while the link is taken up again; otherwise the command is over before the first read.
std::vector<Item> leastPoll()
{
    return {{QLatin1String("DM"), 0, 1, false}};
}

bool changes(const PlcOptions &options)
{
    return options.sets || options.clears || !options.mode.empty();
}

// A run of one of the commands.
class PlcCommand {
public:
    PlcCommand(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const PlcOptions &options)
        : runtime_(library, link), giveUp_(giveUp), options_(options)
    {
        runtime_.watch(leastPoll());
    }

    int info();
    int errors();
    int clock();
    int cycle();
    int mode();

private:
    TimePoint limit() const { return Clock::now() + giveUp_; }

    template <typename Content>
    int show(const Answer<Content> &answer, const char *what, Facts facts(const Content &));
    int print(const Facts &facts) const;
    ServiceReply give(const ServiceRequest &request);
    int fail(const std::string &what, const ServiceReply &reply);
    int failOrder(const std::string &what, const ServiceReply &reply);
    void noteFlags(std::uint16_t endCode) const;

    // A yes counts for what was asked. What holds when it comes is read again, and with it the connection is made anew
    // if it was lost meanwhile: an order is sent once.
    int askForMode(const PlcStatus &before);
    int changeMode();
    int askToClear(const PlcStatus &before);
    int clearErrors();
    int askForClock(const Answer<PlcTime> &before);
    int setClock();
    int unchanged(const std::string &reason) const;
    int differs(const std::string &problem) const;

    Runtime           runtime_;
    const Millis      giveUp_;
    const PlcOptions &options_;
    bool              isGiven_ = false; // the order to change something
};

void complain(const std::string &text)
{
    std::cerr << "fins_panel: " << text << std::endl;
}

int PlcCommand::print(const Facts &facts) const
{
    std::cout << (options_.json ? factsJson(facts) : factLines(facts)) << std::flush;
    return EXIT_DONE;
}

// The command is done in any case: what the flags of its end code say is shown where errors are.
void PlcCommand::noteFlags(std::uint16_t endCode) const
{
    const std::string kinds = cpuErrorText(endCode);
    if (!kinds.empty())
        complain("the PLC reports " + kinds + " with its reply; 'fins_panel plc errors "
                 + hostAndPort(runtime_.options().host, runtime_.options().port) + "' names it");
}

ServiceReply PlcCommand::give(const ServiceRequest &request)
{
    ServiceReply reply = order(runtime_, request, limit());
    isGiven_ = reply.end != ServiceEnd::NOT_SENT;
    return reply;
}

int PlcCommand::fail(const std::string &what, const ServiceReply &reply)
{
    const bool isRefused = reply.end == ServiceEnd::REFUSED;
    if (reply.end == ServiceEnd::NOT_SENT)
        noAnswer(runtime_, giveUp_);
    else
        complain(isRefused ? "the PLC does not tell " + what + ": " + endCodeText(reply.endCode)
                           : "no answer about " + what + ": " + reply.problem);
    if (changes(options_) && !isGiven_)
        complain("nothing was changed");
    return isRefused ? EXIT_REFUSED : EXIT_NO_LINK;
}

// What was ordered and not answered was done, or not, or is done yet.
int PlcCommand::failOrder(const std::string &what, const ServiceReply &reply)
{
    if (reply.end == ServiceEnd::NOT_SENT)
        return fail(what, reply);
    const bool isRefused = reply.end == ServiceEnd::REFUSED;
    complain(isRefused ? "refused: " + what + ": " + endCodeText(reply.endCode)
                       : "unconfirmed: " + what + ": " + reply.problem + "; it was done, or not");
    return isRefused ? EXIT_REFUSED : EXIT_NO_LINK;
}

int PlcCommand::unchanged(const std::string &reason) const
{
    complain("nothing was changed: " + reason);
    return EXIT_NO_LINK;
}

int PlcCommand::differs(const std::string &problem) const
{
    complain(problem);
    return EXIT_REFUSED;
}

template <typename Content>
int PlcCommand::show(const Answer<Content> &answer, const char *what, Facts facts(const Content &))
{
    if (!answer)
        return fail(what, answer.reply);
    noteFlags(answer.reply.endCode);
    return print(facts(*answer));
}

int PlcCommand::info()
{
    return show<Controller>(readController(runtime_, limit()), "what it is", factsOf);
}

int PlcCommand::cycle()
{
    return show<CycleTime>(readCycleTime(runtime_, limit()), "its cycle time", factsOf);
}

// ---- Operating mode ----------------------------------------------------------------------------------------------

PlcMode modeOf(const std::string &name)
{
    return name == "run" ? PlcMode::RUN : name == "monitor" ? PlcMode::MONITOR : PlcMode::PROGRAM;
}

std::string nameOf(PlcMode mode)
{
    return modeText(static_cast<std::uint8_t>(mode));
}

bool isIn(PlcMode mode, const PlcStatus &status)
{
    return status.mode == static_cast<std::uint8_t>(mode);
}

int PlcCommand::mode()
{
    const Answer<PlcStatus> status = readStatus(runtime_, limit());
    if (status && !options_.mode.empty() && !isIn(modeOf(options_.mode), *status))
        return options_.yes ? changeMode() : askForMode(*status);
    return show<PlcStatus>(status, "its operating mode", modeFacts);
}

int PlcCommand::askForMode(const PlcStatus &before)
{
    const PlcMode wanted = modeOf(options_.mode);
    const std::string effect = wanted == PlcMode::PROGRAM ? ", in which its program stops and its outputs fall"
                                                          : ", in which its program runs and its outputs are live";
    if (!isYes("change the PLC from " + modeText(before.mode) + " to " + nameOf(wanted) + " mode" + effect
               + "? [y/N] "))
        return unchanged("not confirmed");
    const Answer<PlcStatus> now = readStatus(runtime_, limit());
    if (now && now->mode == before.mode)
        return changeMode();
    const int code = show<PlcStatus>(now, "its operating mode", modeFacts);
    if (!now || isIn(wanted, *now))
        return code;
    return unchanged("the PLC is in " + modeText(now->mode) + " mode now");
}

int PlcCommand::changeMode()
{
    const PlcMode wanted = modeOf(options_.mode);
    const std::string name = nameOf(wanted);
    const ServiceReply reply = give(::setMode(wanted));
    const int code = reply.end == ServiceEnd::DONE ? EXIT_DONE : failOrder("the change to " + name + " mode", reply);
    if (code == EXIT_REFUSED || reply.end == ServiceEnd::NOT_SENT)
        return code;
    const Answer<PlcStatus> held = readStatus(runtime_, limit());
    if (!held)
        return std::max(code, fail("its operating mode", held.reply));
    noteFlags(held.reply.endCode);
    print(modeFacts(*held));
    if (isIn(wanted, *held))
        return EXIT_DONE;
    return std::max(code, differs("the PLC is in " + modeText(held->mode) + " mode, not in " + name + " mode"));
}

// ---- Errors ------------------------------------------------------------------------------------------------------

bool hasErrors(const PlcStatus &status)
{
    return status.fatal != 0 || status.nonFatal != 0 || status.errorCode != 0;
}

bool hasErrorsOf(const PlcStatus &one, const PlcStatus &other)
{
    return one.fatal == other.fatal && one.nonFatal == other.nonFatal && one.errorCode == other.errorCode
           && one.errorText == other.errorText;
}

// Is it the error alone that keeps the program from running?
bool isHeldByError(const PlcStatus &status)
{
    return status.fatal != 0 && !isIn(PlcMode::PROGRAM, status);
}

int PlcCommand::errors()
{
    const Answer<PlcStatus> status = readStatus(runtime_, limit());
    if (!status)
        return fail("its errors", status.reply);
    if (options_.clears && hasErrors(*status)) {
        std::cerr << factLines(errorFacts(*status));
        return options_.yes ? clearErrors() : askToClear(*status);
    }
    if (options_.clears)
        return print(errorFacts(*status));
    Facts facts = errorFacts(*status);
    const Answer<ErrorLog> log = readErrorLog(runtime_, limit());
    if (log) {
        const Facts logged = factsOf(*log);
        facts.insert(facts.end(), logged.begin(), logged.end());
    }
    print(facts);
    return log ? EXIT_DONE : fail("its error log", log.reply);
}

int PlcCommand::askToClear(const PlcStatus &before)
{
    const std::string effect =
        isHeldByError(before) ? ", after which its program may run again and its outputs be live" : "";
    if (!isYes("clear the PLC's errors" + effect + "? [y/N] "))
        return unchanged("not confirmed");
    const Answer<PlcStatus> now = readStatus(runtime_, limit());
    if (!now)
        return fail("its errors", now.reply);
    const bool isSame = hasErrorsOf(*now, before);
    if (isSame && isHeldByError(*now) == isHeldByError(before))
        return clearErrors();
    print(errorFacts(*now));
    if (!hasErrors(*now))
        return EXIT_DONE;
    return unchanged(isSame ? "the PLC is in " + modeText(now->mode) + " mode now" : "the PLC has other errors now");
}

int PlcCommand::clearErrors()
{
    const ServiceReply reply = give(::clearErrors());
    const int code = reply.end == ServiceEnd::DONE ? EXIT_DONE : failOrder("the clearing of the errors", reply);
    if (reply.end == ServiceEnd::NOT_SENT)
        return code;
    const Answer<PlcStatus> held = readStatus(runtime_, limit());
    if (!held)
        return std::max(code, fail("its errors", held.reply));
    print(errorFacts(*held));
    if (!hasErrors(*held))
        return EXIT_DONE;
    return std::max(code, differs("the PLC has errors still; mend what causes them, and clear them again"));
}

// ---- Clock -------------------------------------------------------------------------------------------------------

Facts clockNow(const PlcTime &time)
{
    return clockFacts(time, std::chrono::system_clock::now());
}

// A clock that was never set may hold what is no time; it can be set all the same.
bool isAnswered(const Answer<PlcTime> &time)
{
    return time || (time.reply.end == ServiceEnd::NO_ANSWER && !time.reply.data.empty());
}

int PlcCommand::clock()
{
    const Answer<PlcTime> time = readClock(runtime_, limit());
    if (options_.sets && isAnswered(time))
        return options_.yes ? setClock() : askForClock(time);
    return show<PlcTime>(time, "its clock", clockNow);
}

int PlcCommand::askForClock(const Answer<PlcTime> &before)
{
    const auto now = std::chrono::system_clock::now();
    const std::string held = before ? plcTimeText(*before) + ", " + differenceText(*before, now) : "no time";
    if (!isYes("the PLC's clock is " + held + "; set it to this computer's time? [y/N] "))
        return unchanged("not confirmed");
    const Answer<PlcTime> again = readClock(runtime_, limit());
    return isAnswered(again) ? setClock() : fail("its clock", again.reply);
}

int PlcCommand::setClock()
{
    const auto sent = std::chrono::system_clock::now();
    const ServiceReply reply = give(::setClock(localTime(sent)));
    const int code = reply.end == ServiceEnd::DONE ? EXIT_DONE : failOrder("the setting of the clock", reply);
    if (code == EXIT_REFUSED || reply.end == ServiceEnd::NOT_SENT)
        return code;
    const Answer<PlcTime> taken = readClock(runtime_, limit());
    if (!taken)
        return std::max(code, fail("its clock", taken.reply));
    noteFlags(taken.reply.endCode);
    print(clockNow(*taken));
    if (hasTaken(*taken, sent, std::chrono::system_clock::now()))
        return EXIT_DONE;
    return std::max(code, differs("the PLC's clock has not taken this computer's time"));
}

} // namespace

int runPlc(const DriverLibrary &library, const LinkOptions &link, Millis giveUp, const PlcOptions &options)
{
    if (changes(options) && !options.yes)
        requireTerminal("what changes the PLC asks first on a terminal, and there is none; run the command on one, or "
                        "give --yes");
    PlcCommand command(library, link, giveUp, options);
    switch (options.task) {
    case PlcTask::INFO:   return command.info();
    case PlcTask::ERRORS: return command.errors();
    case PlcTask::CLOCK:  return command.clock();
    case PlcTask::CYCLE:  return command.cycle();
    case PlcTask::MODE:   break;
    }
    return command.mode();
}
