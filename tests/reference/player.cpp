#include "player.h"

#include "arithmetic.h"

namespace reference {

// ---- The PLC --------------------------------------------------------------------------------------------------------

// Words change rarely, so that many polls find what they found before.
static Int plcWord(Int area, Int address, std::uint32_t noise)
{
    const std::uint32_t epoch = noise % 4;
    const std::uint32_t key = static_cast<std::uint32_t>(area) * 31 + static_cast<std::uint32_t>(address);
    const std::uint32_t mixed = key * 2654435761u + epoch / 2 * 40503u;
    return mixed % 3 == 0 ? Int(epoch % 2) : Int(mixed >> 8 & 0xFFFF);
}

static Bytes rightReply(const Frame &request, std::uint32_t noise)
{
    if (request.sendLen == 20) {
        Bytes handshake(24, 0);
        handshake[19] = static_cast<Byte>(noise >> 8);
        handshake[23] = static_cast<Byte>(noise >> 16);
        return handshake;
    }
    const Int size = request.rcvLen < 0 || request.rcvLen > 3000 ? 30 : request.rcvLen;
    Bytes reply(static_cast<std::size_t>(size), 0);
    if (size > 25)
        reply[25] = request.frame[25];
    for (Int i = 0; 31 + 2 * i < size; ++i) {
        const Int word = plcWord(request.frame[28], plus(request.address, i), noise >> 4);
        reply[static_cast<std::size_t>(30 + 2 * i)] = high8(word);
        reply[static_cast<std::size_t>(31 + 2 * i)] = low8(word);
    }
    return reply;
}

static void setByte(Bytes &reply, std::size_t at, std::uint32_t value)
{
    if (at < reply.size())
        reply[at] = static_cast<Byte>(value);
}

static void setEndCode(Bytes &reply, std::uint32_t code)
{
    setByte(reply, 28, code >> 8);
    setByte(reply, 29, code);
}

Bytes makeReply(const Frame &request, Reply kind, std::uint32_t noise)
{
    static const std::uint32_t END_CODES[] = {0x1101, 0x2201, 0x2202, 0x2205, 0x2207, 0x2303, 0x2103, 0x0003};
    static const std::uint32_t MODE_REFUSALS[] = {0x2203, 0x2204, 0x2206};
    Bytes reply = rightReply(request, noise);
    switch (kind) {
    case Reply::RIGHT:        break;
    case Reply::WRONG_SID:    setByte(reply, 25, request.frame[25] + 1u + noise % 3); break;
    case Reply::SHORT:        reply.resize(reply.size() - (reply.size() > 1 ? 1 + noise % 2 : 0)); break;
    case Reply::LONG:         reply.resize(reply.size() + 1 + noise % 2); break;
    case Reply::END_CODE:     setEndCode(reply, END_CODES[noise % 8]); break;
    case Reply::MODE_REFUSAL: setEndCode(reply, MODE_REFUSALS[noise % 3]); break;
    case Reply::EMPTY:        reply.clear(); break;
    case Reply::NOISE:
        for (std::size_t i = 0; i < reply.size(); ++i)
            reply[i] = static_cast<Byte>(noise >> (i * 7 % 25));
        reply.resize(noise % 5 == 0 ? 24 : reply.size());
        break;
    }
    return reply;
}

// ---- What is seen ---------------------------------------------------------------------------------------------------

void Player::see(const char *what, std::initializer_list<Int> values)
{
    seen_ += what;
    for (const Int value : values)
        seen_ += " " + std::to_string(value);
    seen_ += "\n";
}

void Player::seeText(const char *what, const Text &text) { seen_ += Text(what) + " \"" + text + "\"\n"; }

void Player::seeBytes(const char *what, const Byte *bytes, std::size_t count)
{
    static const char DIGITS[] = "0123456789ABCDEF";
    while (count > 0 && bytes[count - 1] == 0)
        --count; // zeros at the end go without saying
    seen_ += what;
    seen_ += ' ';
    for (std::size_t i = 0; i < count; ++i) {
        seen_ += DIGITS[bytes[i] >> 4];
        seen_ += DIGITS[bytes[i] & 15];
    }
    seen_ += '\n';
}

void Player::seeItem(const KeyAddress &item)
{
    see("item", {item.requestTag, item.address, item.count, item.dataKind, item.bufferOffset, item.keyField2});
    seeText("names", item.name + "," + item.regType + "," + item.keyField6);
    seeBytes("data", item.data.data(), item.data.size());
}

void Player::seeMutex()
{
    if (memory_.isLocked())
        see("the runtime's mutex is held", {});
}

// ---- The runtime ----------------------------------------------------------------------------------------------------

Player::Player(AnyDriver &driver, const RuntimeMemory &memory, int nesting)
    : driver_(driver), memory_(memory), nesting_(nesting)
{
    driver_.setCallback([this](Int stationNo, Int requestTag, const Text &regType, Int address) {
        onChange(stationNo, requestTag, regType, address);
    });
}

void Player::onChange(Int stationNo, Int requestTag, const Text &regType, Int address)
{
    ++calls_;
    see("change", {stationNo, requestTag, address});
    seeText("of", regType);
    seeMutex();
    if (nesting_ == 1)
        read("nested", requestTag, regType, address, 2);
    else if (nesting_ == 2)
        read("nested", calls_ % 3, calls_ % 2 == 0 ? "DM" : "CIO_bit", calls_ * 7 % 90, 3);
}

void Player::read(const char *what, Int tag, const Text &type, Int address, Int count)
{
    const std::size_t room = count > 0 ? 2 * static_cast<std::size_t>(count) : 0;
    Bytes out(room + 2, 0xEE);
    const Int result = driver_.getData(tag, type, address, count, out.data());
    see(what, {result});
    seeBytes("values", out.data(), out.size());
}

void Player::initialise(const Operation &operation)
{
    Int status = -7;
    const Int result = driver_.initProperty(memory_, operation.property, status);
    see("initialised", {result, status});
}

void Player::watch(const Operation &operation)
{
    std::vector<KeyAddress> items = operation.items;
    const Int result = driver_.addrMerge(items);
    see("blocks", {result, static_cast<Int>(items.size())});
    for (const KeyAddress &item : items)
        seeItem(item);
}

void Player::planRecipe(const Operation &operation)
{
    std::vector<RecipeVar> vars = operation.vars;
    const Int result = driver_.setRcpAddress(vars);
    see("recipe variables", {result, static_cast<Int>(vars.size())});
    for (const RecipeVar &var : vars) {
        see("variable", {var.stationNo, var.requestTag, var.address, var.count, var.bufferOffset, var.rcpField7});
        seeText("of", var.regType);
    }
}

void Player::readOnCondition(const Operation &operation)
{
    KeyAddress item = operation.items.at(0);
    const Int result = driver_.addConditionRead(item, operation.id);
    see("condition read", {result});
    seeItem(item);
}

void Player::write(const Operation &o)
{
    const Bytes before = o.data;
    const Int result = driver_.setData(o.tag, o.type, o.address, o.count, o.data.data(), o.id);
    see("written", {result, o.data == before});
}

void Player::send()
{
    Frame frame;
    frame.frame.fill(0xEE);
    frame.value.fill(0xEE);
    frame.sendLen = -77;
    frame.regType = "untouched";
    const Int result = driver_.getSendFrame(frame);
    see("send", {result, frame.sendLen, frame.rcvLen, frame.dataPos, frame.dataLen, frame.reservedField});
    see("for", {frame.requestId, frame.requestTag, frame.address, frame.count});
    seeText("of", frame.regType);
    seeBytes("frame", frame.frame.data(), frame.frame.size());
    seeBytes("value", frame.value.data(), frame.value.size());
    seeMutex();
    if (result == 1)
        inFlight_ = frame;
}

void Player::reply(const Operation &operation)
{
    Bytes bytes = makeReply(inFlight_, operation.reply, operation.noise);
    const Bytes before = bytes;
    Text info = "untouched";
    const Int result = driver_.dealRcvFrame(bytes, info);
    see("received", {result, bytes == before});
    seeText("info", info);
    seeMutex();
}

void Player::checkAddress(const Operation &o)
{
    Int address = -77;
    see("validity", {driver_.checkAddrValidity(o.type, o.text, address, o.count, o.address + 1)});
    see("address", {address});
    address = -77;
    see("check", {driver_.checkAddr(o.type, o.text, address, o.address, o.count, o.id)});
    see("address", {address});
}

void Player::copies(const Operation &o)
{
    std::vector<Text> texts = {"before"};
    std::vector<Int>  addresses = {-77};
    see("copies", {driver_.multiCopy(o.type, o.address, o.count, o.id, texts, addresses)});
    for (const Text &text : texts)
        seeText("text", text);
    for (const Int address : addresses)
        see("address", {address});
}

void Player::lists(const Operation &o)
{
    std::vector<Text> texts = {"before"};
    see("names", {driver_.getRegListByType(o.count, texts)});
    see("fields", {driver_.getRegDiscription(o.type, texts)});
    for (const Text &text : texts)
        seeText("text", text);
}

Text Player::play(const Operation &o)
{
    seen_.clear();
    switch (o.kind) {
    case Kind::INITIALISE:     initialise(o); break;
    case Kind::WATCH:          watch(o); break;
    case Kind::RECIPE_PLAN:    planRecipe(o); break;
    case Kind::CONDITION_READ: readOnCondition(o); break;
    case Kind::WRITE:          write(o); break;
    case Kind::READ:           read("read", o.tag, o.type, o.address, o.count); break;
    case Kind::SEND:           send(); break;
    case Kind::REPLY:          reply(o); break;
    case Kind::CHECK_ADDRESS:  checkAddress(o); break;
    case Kind::COPIES:         copies(o); break;
    case Kind::LISTS:          lists(o); break;
    case Kind::FLAGS:
        memory_.block[WRITE_FLAG] = static_cast<Byte>(o.count / 10);
        memory_.block[READ_FLAG] = static_cast<Byte>(o.count % 10);
        break;
    case Kind::RECIPE_WORDS:
        for (std::uint32_t i = 0; i < 2 * RECIPE_WORDS; ++i)
            memory_.recipe[i] = static_cast<Byte>((i + o.noise) * 2654435761u >> 24);
        break;
    }
    seeBytes("flags", memory_.block + WRITE_FLAG - 2, 4);
    return seen_;
}

} // namespace reference
