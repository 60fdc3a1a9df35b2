#include "runtime_side.h"

// A whole session: the input plays the runtime, which calls any exported function with any arguments, and the PLC,
// which answers with any bytes or none. What only the runtime can guarantee holds: valid pointers, buffers of the
// promised size, one call at a time, a registered callback. Counts are bounded where the driver works in proportion to
// them, and nowhere else.

namespace {

// Items of one call that the driver walks one by one.
enum { WORDS_MOST = 600, BITS_MOST = 1100, WATCHED_MOST = 130, COPIES_MOST = 60, STEPS_MOST = 50 };

// Pieces that one write or conditional read is cut into. Few, as each is compared with all that wait; the second is
// seldom and fills a queue.
enum { PIECES_USUAL = 20, PIECES_MOST = 530 };

// From a recipe variable's offset on the buffer holds a write of the longest block, which is taken as one run.
enum { RUN_MOST = 512 };

FRAME_PRO lastRequest;

bool endsInBit(const QString &regType)
{
    return regType.endsWith(QLatin1String("_bit"));
}

void describe(FuzzInput &input)
{
    qint32 type = 0;
    intf_getProtocolType(&type);
    require(type == 1, "protocol type");
    QString text = QString::fromStdString(input.text(static_cast<std::size_t>(input.upTo(40))));
    intf_SetDriverPropertyPage(text);
    require(text.isEmpty(), "nothing is accepted from a property page");
    intf_getDriverPropertyPage(text);
    require(text == QLatin1String("0_0"), "property page");
    intf_getDriverParameter(text);
    require(text.count(QLatin1Char(',')) == 21, "parameters");
}

void chooseCallback(FuzzInput &input)
{
    setNestedRead(input.upTo(3));
}

std::string propertyOf(FuzzInput &input)
{
    static const qint32 FRAME_WORDS[] = {64, 1, 2, 114, 500, 0, -1, 4};
    const int kind = input.upTo(9);
    if (kind == 0)
        return std::string();
    if (kind == 1)
        return input.text(static_cast<std::size_t>(input.upTo(60)));
    if (kind == 2) {
        std::string text;
        const std::string part = input.text(4);
        while (text.size() < 20000 && !part.empty())
            text += part;
        return text;
    }
    std::string text;
    for (int i = 0; i < 4; ++i)
        text += std::to_string(i == 1 ? input.upTo(15) / 15 : input.upTo(7)) + "#";
    return text + std::to_string(kind == 3 ? input.number() : FRAME_WORDS[input.upTo(7)]);
}

void configure(FuzzInput &input)
{
    configureDriver(propertyOf(input));
}

/// Large settings one by one, which the usual property text seldom has.
void configureAtBorders(FuzzInput &input)
{
    std::string text;
    for (int i = 0; i < 5; ++i)
        text += (i == 0 ? "" : "#") + std::to_string(input.number());
    configureDriver(text);
}

void checkAddresses(FuzzInput &input)
{
    const QString regType = typeOf(input);
    const QString text = QString::fromStdString(input.text(static_cast<std::size_t>(input.upTo(16))));
    const qint32 count = input.number();
    qint32 address = 77;
    const qint32 asBits = intf_checkAddrValidity(regType, text, &address, count, 0);
    qint32 again = 77;
    require(intf_checkAddr(regType, text, &again, -1, count, input.number()) == asBits && again == address,
            "both checks agree");
}

void describeType(FuzzInput &input)
{
    QList<QString> fields;
    require(intf_getRegDiscription(typeOf(input), fields) == 0, "result of a description");
    require(fields.isEmpty() || fields.size() == 5, "fields of a description");
    QList<QString> names;
    const qint32 type = input.number();
    require(intf_getRegListByType(type, names) == (type == 0 || type == 1 ? 1 : 0), "result of a list of types");
    require(names.size() == (type == 0 ? 5 : type == 1 ? 7 : 0), "number of types");
}

void copyAddresses(FuzzInput &input)
{
    const QString regType = typeOf(input);
    const qint32 start = input.number();
    const qint32 copies = input.count(COPIES_MOST);
    QVector<QString> texts;
    QVector<qint32> addresses;
    const qint32 result = intf_multiCopy(regType, start, copies, input.number(), texts, addresses);
    require(result >= 0 && result <= 2 && texts.size() == addresses.size(), "copies of a variable");
    require(addresses.size() == (result == 0 || copies < 1 ? 0 : copies), "number of copies");
}

void watch(FuzzInput &input)
{
    QList<KEY_ADDRESS> items;
    const int size = input.upTo(8);
    for (int i = 0; i < size; ++i) {
        KEY_ADDRESS item;
        item.requestTag = input.upTo(3);
        item.regType = typeOf(input);
        item.address = input.number();
        item.count = input.count(WATCHED_MOST);
        items.append(item);
    }
    const qint32 blocks = intf_addrMerge(items);
    require(blocks == items.size() && blocks == driver.readList.size() && blocks <= size, "blocks of a poll plan");
    require((blocks == 0) == (size == 0), "a poll plan is empty only for no items");
}

void planRecipe(FuzzInput &input)
{
    QVector<_RCP_VAR_PRO> variables;
    const int size = input.upTo(6);
    for (int i = 0; i < size; ++i) {
        _RCP_VAR_PRO variable = _RCP_VAR_PRO();
        variable.stationNo = input.upTo(7) == 7 ? input.upTo(7) : driver.stationNo;
        variable.requestTag = input.upTo(3);
        variable.regType = typeOf(input);
        variable.address = input.number();
        variable.count = input.count(WORDS_MOST);
        const qint32 last = RECIPE_WORDS - qMax<qint32>(RUN_MOST, variable.count);
        variable.bufferOffset = static_cast<qint32>(static_cast<quint32>(input.number()) % quint32(last + 1));
        variables.append(variable);
    }
    const qint32 kept = intf_setRcpAddress(variables);
    require(kept == driver.recipeVars.size() && kept <= size, "variables of a recipe");
    require(driver.recipeBlocks.size() <= kept && driver.recipeBlocks.isEmpty() == (kept == 0), "blocks of a recipe");
}

void requestRecipe(FuzzInput &input)
{
    const int choice = input.upTo(3);
    setRecipeFlags((choice & 1) != 0, (choice & 2) != 0);
}

void request(FuzzInput &)
{
    takeRequest(lastRequest);
}

void keepSilent(FuzzInput &)
{
    giveReply(std::vector<quint8>());
}

void answerAnything(FuzzInput &input)
{
    giveReply(input.bytes(static_cast<std::size_t>(input.byte())));
}

/// A request and an answer that fits it, but for what one byte chooses.
void exchange(FuzzInput &input)
{
    if (!takeRequest(lastRequest))
        return;
    const int choice = input.byte();
    std::vector<quint8> reply = replyTo(lastRequest, input.bytes(static_cast<std::size_t>(choice >> 4)));
    const bool isCommand = reply.size() >= 30;
    if ((choice & 15) == 15 && isCommand)
        reply[25] = input.byte();
    if ((choice & 15) == 14 && isCommand)
        reply[28] = 0x22;
    if ((choice & 15) >= 12 && (choice & 15) <= 14 && isCommand)
        reply[29] = static_cast<quint8>(input.upTo(7));
    if ((choice & 15) == 11)
        reply.resize(reply.size() + 1);
    if ((choice & 15) == 10 && !reply.empty())
        reply.pop_back();
    giveReply(reply);
}

void getValues(FuzzInput &input)
{
    const qint32 requestTag = input.upTo(15) == 15 ? input.number() : input.upTo(3);
    const QString regType = typeOf(input);
    const qint32 address = input.number();
    const qint32 count = input.count(endsInBit(regType) ? BITS_MOST : WORDS_MOST);
    const std::vector<quint8> values = readValues(requestTag, regType, address, count);
    require(readValues(requestTag, regType, address, count) == values, "values stay between two reads");
}

/// `count`, or less where pieces of `limit` would be too many. A limit below 1 cuts nothing.
qint32 inPieces(FuzzInput &input, qint32 count, qint32 limit)
{
    const qint32 most = input.upTo(31) == 31 ? PIECES_MOST : PIECES_USUAL;
    return limit < 1 || count / limit < most ? count : limit * most;
}

/// The values that a read gives after a write of `data`.
std::vector<quint8> shown(bool bits, const std::vector<quint8> &data)
{
    std::vector<quint8> values = data;
    for (quint8 &value : values)
        value = bits && value != 1 ? quint8(0) : value;
    return values;
}

void setValues(FuzzInput &input)
{
    const qint32 requestTag = input.upTo(3);
    const QString regType = typeOf(input);
    const bool bits = endsInBit(regType);
    const qint32 address = input.number();
    const qint32 count = inPieces(input, input.count(bits ? BITS_MOST : WORDS_MOST), driver.wordsPerFrame);
    std::vector<quint8> data = input.bytes(static_cast<std::size_t>(input.upTo(15)));
    data.resize(count < 1 ? 0 : static_cast<std::size_t>(count) * (bits ? 1 : 2), quint8(input.upTo(1)));
    // A copy of exactly the promised size.
    const std::vector<quint8> exact(data);
    require(intf_setData(requestTag, regType, address, count, exact.data(), input.number()) == 1,
            "result of intf_setData");
    if (!bits || (address >= 0 && address <= INT32_MAX - BITS_MOST))
        require(readValues(requestTag, regType, address, count) == shown(bits, exact), "written values show at once");
}

void readOnCondition(FuzzInput &input)
{
    KEY_ADDRESS item;
    item.requestTag = input.upTo(3);
    item.regType = typeOf(input);
    item.address = input.number();
    item.dataKind = input.upTo(2) - 1;
    const qint32 limit = item.dataKind == -1 ? driver.maxBitsPerFrame : driver.wordsPerFrame;
    item.count = inPieces(input, input.number(), limit);
    require(intf_addConditionRead(item, input.number()) == 1, "result of intf_addConditionRead");
    require(limit < 0 || !driver.conditionReadList.isEmpty(), "a read is queued");
}

typedef void (*Step)(FuzzInput &input);

// Communication makes up half of the steps.
const Step STEPS[] = {exchange,      exchange,       exchange,     exchange,         request,        keepSilent,
                      exchange,      answerAnything, configure,    configureAtBorders, watch,        watch,
                      planRecipe,    requestRecipe,  getValues,    setValues,        readOnCondition, chooseCallback,
                      describe,      checkAddresses, describeType, copyAddresses,    setValues,      exchange};
const int STEP_COUNT = sizeof STEPS / sizeof STEPS[0];

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    loadDriver();
    // Some sessions begin in another order than the usual one.
    if (input.upTo(15) != 15)
        configureDriver(propertyOf(input));
    for (int i = 0; i < STEPS_MOST && !input.isEmpty(); ++i) {
        STEPS[input.byte() % STEP_COUNT](input);
        checkState();
    }
    loadDriver(); // what is left after it has leaked
    return 0;
}
