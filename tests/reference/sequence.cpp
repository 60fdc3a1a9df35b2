#include "sequence.h"

#include <random>

#include "arithmetic.h"
#include "register_types.h"

namespace reference {

namespace {

// Every sequence keeps to a few register types and a narrow range of addresses, so that its items meet: duplicates,
// neighbours, overlaps, words and the bits in them.
class Generator {
public:
    explicit Generator(std::uint32_t seed) : random_(seed) {}

    Sequence make();

private:
    std::uint32_t noise() { return static_cast<std::uint32_t>(random_()); }
    std::uint32_t below(std::uint32_t limit) { return noise() % limit; }
    bool          chance(unsigned percent) { return below(100) < percent; }
    Int           between(Int low, Int high) { return low + Int(below(static_cast<unsigned>(high - low + 1))); }
    template <class Value> Value one(const std::vector<Value> &values)
    {
        return values[below(static_cast<std::uint32_t>(values.size()))];
    }

    void chooseSurroundings();
    Text type() { return one(types_); }
    Int  tag() { return one(tags_); }
    Int  addressOf(const Text &type);
    Int  count();
    Text propertyText();

    Operation &add(Kind kind);
    void initialise();
    void watch();
    void planRecipe();
    void readOnCondition();
    void write();
    void read();
    void exchange();
    void reply(Reply kind);
    void badReply();
    void loseLink();
    void setFlags();
    void flood();
    void enterAddress();
    void step();

    std::mt19937           random_;
    std::vector<Operation> operations_;
    std::vector<Text>      types_;
    std::vector<Int>       tags_;
    Int                    base_ = 0;
    Int                    limit_ = 64;   // words per frame
    Int                    station_ = 1;
    bool                   isOdd_ = false; // negative and wrapping addresses occur
};

const std::vector<Text> ODD_TYPES = {"EM", "X_bit", "A_B_bit", "_bit", "_bits", "dm_Bit", "DM_BIT", "", "bit", "EM%1",
                                     "C_bit", "T_bit", "\xC4_bit", "DM ", "%2%5"};

void Generator::chooseSurroundings()
{
    for (Int i = between(1, 5); i > 0; --i) {
        types_.push_back(chance(92) ? Text(REGISTER_TYPES[below(TYPE_COUNT)].name) : one(ODD_TYPES));
        // Often a bit type together with the words that hold its bits.
        if (isBitName(types_.back()) && chance(60))
            types_.push_back(wordName(types_.back()));
    }
    tags_ = chance(60) ? std::vector<Int>{1} : std::vector<Int>{0, 1, -1, 70000};
    isOdd_ = chance(15);
    base_ = isOdd_ ? one<Int>({-6, -1, -300, INT32_MAX - 8, INT32_MIN, 134217726, -134217728, 65533, 4194300})
                   : one<Int>({0, 0, 100, 250, 32760, 65530});
}

Int Generator::addressOf(const Text &type)
{
    if (!isBitName(type))
        return plus(base_, between(0, chance(80) ? 12 : 90));
    return plus(times(base_, chance(90) ? 16 : 1), between(0, chance(80) ? 70 : 300));
}

Int Generator::count()
{
    if (chance(62))
        return between(1, 6);
    if (chance(40) && limit_ > 0 && limit_ < 500)
        return one<Int>({limit_ - 1, limit_, limit_ + 1, 2 * limit_, 2 * limit_ + 1, limit_ / 2});
    if (chance(30))
        return one<Int>({0, 0, -1, -2, -3, -14, -15, -16, -17, -100});
    if (chance(85))
        return between(7, 40);
    return one<Int>({113, 114, 115, 229, 230, 255, 256, 257, 494, 495, 496, 497, 511, 512, 513, 600, 989, 990, 991,
                     992, 1023, 1024, 1025});
}

Text Generator::propertyText()
{
    if (chance(6)) {
        limit_ = 64; // or another one: counts that only a limit of 0 does not cut are out of the question
        return one<Text>({"", "1#0#0#3", "a#b#c#d#e", "#", "1#0#0#3#", "####", "1#0#0#3#64#9", " 1#0 #0# 3 #+64",
                          "1#0#0#-3#-64", "2147483648#0#0#3#8", "1#0#x#2#2147483647", "1#0#0#3#\xB2", "0x1#0#0#3#8",
                          "1#0#0#3#8.0", "01#00#1#03#0008", "-#+#--1#+-2#3", "1#0#0#3#300000000"});
    }
    station_ = chance(85) ? 1 : one<Int>({0, -1, 7});
    limit_ = chance(45) ? one<Int>({8, 16, 64, 114}) : one<Int>({0, -1, -8, 1, 2, 3, 5, 20, 200, 495, 496, 600, 1000});
    const Int direct = chance(94) ? 0 : one<Int>({1, -1, 2});
    const Int retries = chance(70) ? 3 : one<Int>({0, 1, 2, -1, 5, 100});
    return std::to_string(station_) + "#" + std::to_string(direct) + "#" + std::to_string(below(3)) + "#"
         + std::to_string(retries) + "#" + std::to_string(limit_);
}

Operation &Generator::add(Kind kind)
{
    operations_.push_back(Operation());
    operations_.back().kind = kind;
    return operations_.back();
}

void Generator::initialise()
{
    Operation &operation = add(Kind::INITIALISE);
    operation.property.text = propertyText();
    operation.property.arg2 = between(-2, 2);
    operation.property.hasBlock = chance(98);
    operation.property.hasMutex = chance(98);
}

void Generator::watch()
{
    Operation &operation = add(Kind::WATCH);
    for (Int i = between(0, chance(90) ? 6 : 25); i > 0; --i) {
        KeyAddress item;
        item.regType = type();
        item.requestTag = tag();
        item.address = addressOf(item.regType);
        item.count = count();
        item.dataKind = between(-1, 1);
        item.bufferOffset = between(0, 9);
        item.keyField2 = between(0, 9);
        item.name = "item " + std::to_string(i);
        item.keyField6 = one<Text>({"", "six"});
        item.data[0] = static_cast<Byte>(i);
        item.data[BUFFER_SIZE - 1] = static_cast<Byte>(i);
        operation.items.push_back(item);
        if (chance(10))
            operation.items.push_back(item);
    }
}

void Generator::planRecipe()
{
    Operation &operation = add(Kind::RECIPE_PLAN);
    Int next = addressOf("DM"), offset = between(0, 20);
    const Text sameType = type();
    for (Int i = between(0, 7); i > 0; --i) {
        RecipeVar var;
        var.stationNo = chance(90) ? station_ : station_ + 1;
        var.requestTag = tag();
        var.regType = chance(75) ? sameType : type();
        var.count = count();
        // Mostly one behind the other, as a recipe is laid out, with a gap or an overlap now and then.
        var.address = chance(75) ? plus(next, chance(75) ? 0 : between(-3, 3)) : addressOf(var.regType);
        var.bufferOffset = chance(75) ? offset : between(0, 1500);
        var.rcpField7 = between(0, 5);
        next = plus(var.address, var.count);
        const bool isBehind = chance(50) && var.count > 0 && offset + var.count < 1500;
        offset = isBehind ? offset + var.count : between(0, 1500);
        operation.vars.push_back(var);
    }
}

void Generator::readOnCondition()
{
    Operation &operation = add(Kind::CONDITION_READ);
    KeyAddress item;
    item.regType = type();
    item.requestTag = tag();
    item.address = addressOf(item.regType);
    item.count = chance(98) || limit_ > 0 ? count() : one<Int>({INT32_MAX, INT32_MIN, 1 << 30, -(1 << 30), 65536});
    item.dataKind = one<Int>({-1, 0, 1, -2});
    item.name = "read";
    item.data[5] = 5;
    operation.items.push_back(item);
    operation.id = between(0, 9);
    if (chance(30))
        operations_.push_back(Operation(operations_.back()));
}

void Generator::write()
{
    Operation &operation = add(Kind::WRITE);
    operation.tag = tag();
    operation.type = type();
    operation.address = addressOf(operation.type);
    operation.count = count();
    operation.id = between(0, 9);
    const bool isBit = isBitName(operation.type);
    const Int  size = isBit ? operation.count : 2 * operation.count;
    for (Int i = 0; i < size; ++i)
        operation.data.push_back(isBit ? one<Byte>({0, 1, 1, 0, 2, 255}) : one<Byte>({0, 0, 1, 0x80, 0xFF, 0x5A}));
    if (chance(30)) { // the same variable once more, with other values
        Operation again = operation;
        for (Byte &byte : again.data)
            byte = static_cast<Byte>(byte ^ 1);
        operations_.push_back(again);
    }
}

void Generator::read()
{
    Operation &operation = add(Kind::READ);
    operation.tag = tag();
    operation.type = type();
    operation.address = addressOf(operation.type);
    operation.count = count();
}

void Generator::reply(Reply kind)
{
    Operation &operation = add(Kind::REPLY);
    operation.reply = kind;
    operation.noise = noise();
}

void Generator::badReply()
{
    reply(one<Reply>({Reply::WRONG_SID, Reply::SHORT, Reply::LONG, Reply::END_CODE, Reply::END_CODE,
                      Reply::MODE_REFUSAL, Reply::MODE_REFUSAL, Reply::EMPTY, Reply::NOISE}));
}

void Generator::exchange()
{
    if (chance(97))
        add(Kind::SEND);
    if (chance(4))
        add(Kind::SEND);
    if (chance(80))
        reply(Reply::RIGHT);
    else if (chance(85))
        badReply();
}

void Generator::loseLink()
{
    const Reply kind = one<Reply>({Reply::WRONG_SID, Reply::SHORT, Reply::LONG, Reply::EMPTY});
    for (Int i = between(3, 5); i > 0; --i) {
        add(Kind::SEND);
        reply(kind);
    }
}

void Generator::setFlags()
{
    add(Kind::FLAGS).count = one<Int>({10, 10, 1, 1, 11, 0, 20, 2});
    for (Int i = between(0, 6); i > 0; --i)
        exchange();
}

// More queued pieces than the queues hold.
void Generator::flood()
{
    const bool isWrite = chance(50);
    const Text onlyType = type();
    for (Int i = 0; i < 517; ++i) {
        Operation &operation = add(isWrite ? Kind::WRITE : Kind::CONDITION_READ);
        operation.type = onlyType;
        operation.address = i;
        operation.count = 1;
        operation.data = {static_cast<Byte>(i & 1), 7};
        KeyAddress item;
        item.regType = onlyType;
        item.address = 2 * i;
        item.count = 1;
        operation.items.push_back(item);
    }
}

void Generator::enterAddress()
{
    Operation &check = add(Kind::CHECK_ADDRESS);
    check.type = chance(90) ? Text(REGISTER_TYPES[below(TYPE_COUNT)].name) : one(ODD_TYPES);
    const Int word = one<Int>({0, 1, 447, 448, 511, 512, 959, 960, 1535, 1536, 4095, 4096, 6143, 6144, 32767, 32768,
                               -1});
    check.text = std::to_string(word);
    if (chance(isBitName(check.type) ? 90 : 10))
        check.text += "." + one<Text>({"0", "1", "9", "10", "15", "16", "05", "", "-1", "+1", " 1", "1 ", "1.2", "x"});
    if (chance(15))
        check.text = one<Text>({"", ".", " 12 ", "+7", "--1", "abc", ".5", "5.", "99999999999", "1e3", "\xB2", "- 1"});
    check.count = one<Int>({0, 1, 2, 16, 17, -1, -5});
    check.address = one<Int>({-1, -1, 0, 1});
    check.id = between(0, 3);
    Operation &copies = add(Kind::COPIES);
    copies.type = operations_[operations_.size() - 2].type;
    copies.address = one<Int>({0, 14, 32766, 8190, 98302, 524286, -3, -20, INT32_MAX - 1, 4095, 511});
    copies.count = between(-1, 4);
    copies.id = one<Int>({1, -1, -2, 0, -5, 3, 16, 1 << 30});
    Operation &lists = add(Kind::LISTS);
    lists.type = chance(80) ? Text(REGISTER_TYPES[below(TYPE_COUNT)].name) : one(ODD_TYPES);
    lists.count = between(-1, 3);
}

void Generator::step()
{
    const std::uint32_t choice = below(1000);
    if (choice < 560)
        return exchange();
    if (choice < 690)
        return write();
    if (choice < 770)
        return read();
    if (choice < 830)
        return readOnCondition();
    if (choice < 870)
        return watch();
    if (choice < 900)
        return planRecipe();
    if (choice < 940)
        return setFlags();
    if (choice < 955)
        return loseLink();
    if (choice < 970)
        return initialise();
    if (choice < 985)
        return enterAddress();
    if (choice < 987)
        return flood();
    add(Kind::RECIPE_WORDS).noise = noise();
}

Sequence Generator::make()
{
    chooseSurroundings();
    if (chance(92))
        initialise();
    if (chance(85))
        watch();
    if (chance(60))
        planRecipe();
    for (Int i = between(10, 70); i > 0; --i)
        step();
    for (Int i = chance(40) ? 12 : 0; i > 0; --i) { // what is left over, answered well
        add(Kind::SEND);
        reply(Reply::RIGHT);
    }
    Sequence sequence;
    sequence.nesting = chance(50) ? 0 : between(1, 2);
    sequence.operations = operations_;
    return sequence;
}

} // namespace

Sequence randomSequence(std::uint32_t seed) { return Generator(seed).make(); }

} // namespace reference
