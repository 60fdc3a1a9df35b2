// A panel runtime with all of its link duties: panel_runtime LIBRARY ADDRESS PORT [--allow-mode-change]
// It shows the words that it watches and obeys one command a line: write A | store A B C (a recipe) | load | quit.
// One thread and one command at a time; docs/interface.md says why. A refused word stays out while the connection is.
#include "omron_fins_ethernet.h"

#include <QtCore/QStringList>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

typedef std::chrono::steady_clock Clock;
enum { TAG = 1, RECIPE_WRITE = 60115, RECIPE_READ = 60116 };
enum Kind { HANDSHAKE, READ, WRITE, MODE_CHANGE };
enum Verdict { GOOD, REFUSED, SILENT, BROKEN, LATE };

struct Shared { // the driver is given 32-bit addresses of these, so they lie below 4 GiB
    quint8  block[60117];
    quint16 recipe[3]; // HR 10, DM 200, DM 201; low byte first, like this machine
    QMutex  mutex;
};
static Shared *shared;
static void *library;
static QList<KEY_ADDRESS> watched, plan;     // words; the plan lacks those that the PLC refuses
static QVector<int> shown;                   // their values, -1: none since the connection began
static int tcp = -1;                         // the connection, -1: none
static QByteArray sent, reply, nodes;        // nodes: the handshake reply of this connection
static FRAME_PRO request;
static bool online, inFlight, mayChangeMode; // online: a poll was accepted since the handshake
static bool begun, readsBack;                // the command was handed over; it was done, and awaits a read
static QStringList command;                  // in progress; empty: none
static int pauseMs = 100;                    // until the next attempt to connect, which is at:
static Clock::time_point retryAt;

template <typename Function> static Function found(const char *name)
{
    if (void *function = dlsym(library, name))
        return reinterpret_cast<Function>(function);
    std::exit((std::fprintf(stderr, "the library lacks %s\n", name), 2));
}
#define DRIVER(name) found<decltype(&name)>(#name)

static quint32 get16(const QByteArray &from, int at)
{
    return static_cast<quint32>(static_cast<quint8>(from.at(at)) << 8 | static_cast<quint8>(from.at(at + 1)));
}
static quint32 get32(const QByteArray &from, int at) { return get16(from, at) << 16 | get16(from, at + 2); }
static quint32 endCode() { return get16(reply, 28) & 0xFF3F; } // bits 6 and 7 tell of errors in the CPU unit

static Kind kindOf(const QByteArray &frame)
{
    if (get32(frame, 8) == 0)
        return HANDSHAKE;
    return get16(frame, 26) == 0x0101 ? READ : get16(frame, 26) == 0x0102 ? WRITE : MODE_CHANGE;
}

// One thread, so the mutex need not be taken: nobody else looks at the two bytes meanwhile.
static bool recipeRuns() { return shared->block[RECIPE_WRITE] != 0 || shared->block[RECIPE_READ] != 0; }

static bool serves(const KEY_ADDRESS &word)
{
    return word.regType == request.regType && word.address >= request.address
        && word.address < request.address + request.count;
}

static void watch(QList<KEY_ADDRESS> words)
{
    plan = words;
    DRIVER(intf_addrMerge)(words);
}

static void finish(const QString &outcome)
{
    if (!command.isEmpty())
        std::printf("%s: %s\n", qPrintable(command.join(" ")), qPrintable(outcome));
    command.clear();
    begun = readsBack = false;
}

static qint32 deal(QByteArray bytes)
{
    QString info;
    return DRIVER(intf_dealRcvFrame)(bytes, info);
}

// Only missing replies make the driver end its job and, with it, its link: its next request is a handshake.
static void giveUpJob()
{
    while (DRIVER(intf_getSendFrame)(&request) == 1 && deal(QByteArray()) != 2) {}
    online = inFlight = false;
}

static void lose(const char *reason)
{
    close(tcp);
    tcp = -1;
    nodes.clear();
    giveUpJob();
    shared->block[RECIPE_WRITE] = shared->block[RECIPE_READ] = 0; // else the next handshake would pass for a block
    watch(watched);
    shown.fill(-1);
    finish(begun ? "unknown, the link was lost" : "not sent, the link was lost");
    std::printf("no link: %s; the values are the last known\n", reason);
    retryAt = Clock::now() + std::chrono::milliseconds(pauseMs);
    pauseMs = qMin(2 * pauseMs, 5000);
}

static void connectTo(const char *address, int port)
{
    sockaddr_in plc = {};
    plc.sin_family = AF_INET;
    plc.sin_port = htons(static_cast<quint16>(port));
    tcp = socket(AF_INET, SOCK_STREAM, 0);
    const timeval second = { 1, 0 };
    setsockopt(tcp, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second); // bounds connect() and send()
    if (inet_pton(AF_INET, address, &plc.sin_addr) != 1 || connect(tcp, reinterpret_cast<sockaddr *>(&plc), sizeof plc))
        lose("cannot connect");
}

static Verdict judge()
{
    if (get32(reply, 12) != 0)
        return BROKEN; // a FINS/TCP error: the PLC closes the connection
    if (kindOf(sent) == HANDSHAKE)
        return get32(reply, 8) == 1 && reply.size() == 24 ? GOOD : BROKEN;
    if (get32(reply, 8) != 2 || reply.size() < 30 || reply.at(25) != sent.at(25) || get16(reply, 26) != get16(sent, 26))
        return LATE;
    return endCode() == 0 ? GOOD : REFUSED;
}

// One reply, whole, whatever its segments. One that is cut short leaves the stream out of step.
static Verdict receive(Clock::time_point deadline)
{
    reply.clear();
    for (int wanted = 16; reply.size() < wanted;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd ready = { tcp, POLLIN, 0 };
        if (left <= 0 || poll(&ready, 1, static_cast<int>(left)) != 1)
            return reply.isEmpty() ? SILENT : BROKEN;
        char bytes[2048];
        const ssize_t got = recv(tcp, bytes, qMin(sizeof bytes, static_cast<size_t>(wanted - reply.size())), 0);
        if (got <= 0)
            return BROKEN;
        reply.append(bytes, static_cast<int>(got));
        if (reply.size() == 16 && (get32(reply, 4) < 8 || get32(reply, 4) > 4096))
            return BROKEN;
        if (reply.size() == 16)
            wanted = 8 + static_cast<int>(get32(reply, 4));
    }
    return judge();
}

static Verdict exchange()
{
    if (send(tcp, sent.constData(), static_cast<size_t>(sent.size()), MSG_NOSIGNAL) != sent.size())
        return BROKEN;
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(1);
    Verdict verdict = LATE;
    while (verdict == LATE)
        verdict = receive(deadline);
    return verdict;
}

static void readRefused() // the connection is sound, and kept
{
    const bool isRecipe = recipeRuns();
    QList<KEY_ADDRESS> rest;
    for (int i = 0; i < plan.size(); ++i) {
        if (isRecipe || !serves(plan.at(i)))
            rest.append(plan.at(i));
        else
            std::printf("DM %d: refused, %04X\n", plan.at(i).address, endCode());
    }
    giveUpJob();
    watch(rest);
    if (isRecipe)
        finish("refused");
}

static void pollAccepted()
{
    online = true;
    pauseMs = 100;
    for (int i = 0; i < watched.size(); ++i) {
        quint8 bytes[2];
        DRIVER(intf_getData)(TAG, "DM", watched.at(i).address, 1, bytes);
        const int value = bytes[0] + 256 * bytes[1];
        if (serves(watched.at(i)) && value != shown.at(i))
            std::printf("DM %d = %d\n", watched.at(i).address, shown[i] = value);
    }
    if (readsBack && serves(watched.at(0)))
        finish(shown.at(0) == command.at(1).toInt() ? "done" : "differs");
}

static void handOver(Kind kind, Verdict verdict)
{
    const bool isRecipe = recipeRuns();
    const qint32 result = deal(verdict == SILENT ? QByteArray() : reply);
    if (result == 2 && verdict == SILENT)
        return lose("no reply");
    if (result == 1)
        inFlight = kind == MODE_CHANGE; // then the refused write comes again
    else if (result == 2 || verdict == GOOD) // the write after a change of mode: the driver rejects its reply
        giveUpJob();
    if (kind == HANDSHAKE && result == 1)
        nodes = reply;
    else if (kind == READ && result == 1 && !isRecipe)
        pollAccepted();
    else if (kind == WRITE && result == 1 && verdict == REFUSED) { // which the driver takes for done
        if (recipeRuns())
            giveUpJob(); // rather than write the other blocks
        finish(QString("refused, %1").arg(endCode(), 4, 16, QChar('0')));
    } else if (isRecipe && !recipeRuns())
        finish(result == 1 ? QString("HR 10 = %1, DM 200 = %2, DM 201 = %3").arg(shared->recipe[0])
                                 .arg(shared->recipe[1]).arg(shared->recipe[2]) : QString("cut short, store it again"));
    else if (kind == WRITE && !isRecipe && !inFlight)
        readsBack = true;
}

static void step()
{
    if (DRIVER(intf_getSendFrame)(&request) == 0)
        return; // every word is refused
    inFlight = true;
    sent = QByteArray(reinterpret_cast<const char *>(request.frame), request.sendLen);
    const Kind kind = kindOf(sent);
    if (kind == MODE_CHANGE && !mayChangeMode) { // it is never sent
        giveUpJob();
        return finish("refused, the PLC's mode stays as it is");
    }
    const bool isKnown = kind == HANDSHAKE && !nodes.isEmpty(); // a connection is given one node address
    const Verdict verdict = isKnown ? GOOD : exchange();
    if (isKnown)
        reply = nodes;
    if (verdict == BROKEN || (kind == HANDSHAKE && verdict == SILENT))
        lose("the connection is broken");
    else if (kind == READ && verdict == REFUSED)
        readRefused();
    else
        handOver(kind, verdict);
}

static void begin()
{
    bool good = command.size() <= 4;
    quint16 numbers[3] = {};
    for (int i = 1; i < command.size() && good; ++i)
        numbers[i - 1] = command.at(i).toUShort(&good);
    begun = true;
    if (good && command.size() == 2 && command.at(0) == "write") {
        const quint8 bytes[2] = { static_cast<quint8>(numbers[0] & 0xFF), static_cast<quint8>(numbers[0] >> 8) };
        DRIVER(intf_setData)(TAG, "DM", watched.at(0).address, 1, bytes, 2);
    } else if (good && command.size() == 4 && command.at(0) == "store") {
        std::memcpy(shared->recipe, numbers, sizeof numbers);
        shared->block[RECIPE_WRITE] = 1;
    } else if (command.size() == 1 && command.at(0) == "load") {
        shared->block[RECIPE_READ] = 1;
    } else {
        finish("not understood; write A, store A B C, load or quit, with numbers from 0 to 65535");
    }
}

static bool pauseForInput() // false: the end
{
    pollfd ready[2] = { { command.isEmpty() ? STDIN_FILENO : -1, POLLIN, 0 }, { tcp, POLLIN, 0 } };
    poll(ready, 2, 50);
    char line[80];
    if (tcp >= 0 && ready[1].revents != 0 && recv(tcp, line, 1, MSG_PEEK | MSG_DONTWAIT) <= 0)
        lose("the PLC has closed the connection");
    if (ready[0].revents == 0)
        return true;
    if (!std::fgets(line, sizeof line, stdin))
        return false;
    command = QString(line).simplified().split(' ');
    return command.at(0) != "quit";
}

static void configure()
{
    void *wanted = reinterpret_cast<void *>(static_cast<quintptr>(0x20000000));
    void *memory = mmap(wanted, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const auto address = [](const void *object) { return static_cast<qint32>(reinterpret_cast<quintptr>(object)); };
    if (memory == MAP_FAILED || reinterpret_cast<quintptr>(memory) > 0xF0000000u)
        std::exit((std::fprintf(stderr, "no memory below 4 GiB\n"), 3));
    shared = new (memory) Shared();
    DRIVER(intf_setAddrValueChangeCallBack)([](qint32, qint32, QString, qint32) {}); // every accepted read is looked at
    qint32 status = 0;
    DRIVER(intf_initProperty)(address(shared->block), 0, address(shared->recipe), &status, "1#0#0#3#64",
                              address(&shared->mutex));
    QVector<_RCP_VAR_PRO> recipe;
    recipe.append(_RCP_VAR_PRO{ 1, TAG, "HR", 10, 1, 0, 0 });
    recipe.append(_RCP_VAR_PRO{ 1, TAG, "DM", 200, 2, 1, 0 });
    DRIVER(intf_setRcpAddress)(recipe);
    for (const qint32 word : { 100, 3000 }) {
        watched.append(KEY_ADDRESS());
        watched.last().requestTag = TAG;
        watched.last().regType = "DM";
        watched.last().address = word;
        watched.last().count = 1;
        shown.append(-1);
    }
    watch(watched);
}

int main(int argc, char **argv)
{
    if (argc < 4 || !(library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL))) {
        std::fprintf(stderr, "usage: panel_runtime LIBRARY ADDRESS PORT [--allow-mode-change]\n");
        return 2;
    }
    mayChangeMode = argc > 4 && std::strcmp(argv[4], "--allow-mode-change") == 0;
    setvbuf(stdin, nullptr, _IONBF, 0); // poll() then sees every line that was not read
    setvbuf(stdout, nullptr, _IOLBF, 0);
    configure();
    do {
        if (tcp < 0 && Clock::now() >= retryAt)
            connectTo(argv[2], std::atoi(argv[3]));
        if (!command.isEmpty() && !begun && tcp < 0)
            finish("not sent, there is no link");
        if (!command.isEmpty() && !begun && online && !inFlight && !recipeRuns())
            begin();
        if (tcp >= 0)
            step();
    } while (pauseForInput());
    return 0;
}
