#include "fuzz_input.h"
#include "omron_fins_ethernet.h"

// Address texts through the five functions of address entry.

namespace {

struct TypeRow {
    const char *name;
    qint32      minimum; // bit addresses for bit types
    qint32      maximum;
};

// Word * 16 + bit for the bit types.
const TypeRow TYPES[] = {
    {"CIO_bit", 0,         6143 * 16 + 15},
    {"WR_bit",  0,         511 * 16 + 15},
    {"HR_bit",  0,         1535 * 16 + 15},
    {"AR_bit",  448 * 16,  959 * 16 + 15},
    {"DM_bit",  0,         32767 * 16 + 15},
    {"CIO",     0,         6143},
    {"WR",      0,         511},
    {"HR",      0,         1535},
    {"AR",      0,         959},
    {"T",       0,         4095},
    {"C",       0,         4095},
    {"DM",      0,         32767}};
enum { TYPE_COUNT = 12, BIT_TYPES = 5, COPIES_MOST = 40 };

/// The text in one of three encodings, so that any 16-bit character can come.
QString textOf(FuzzInput &input)
{
    const int encoding = input.upTo(3);
    const std::vector<std::uint8_t> bytes = input.bytes(200);
    const std::string text(bytes.begin(), bytes.end());
    if (encoding < 2)
        return QString::fromStdString(text);
    QString result;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        result += QChar(static_cast<ushort>(bytes[i] << 8 | bytes[i + 1]));
    return encoding == 2 ? result : QString::fromLatin1(text.data(), static_cast<int>(text.size()));
}

/// What a check's result says about the address.
void checkAccepted(const TypeRow &type, qint32 address, qint32 count)
{
    const qint64 end = qint64(address) + count;
    require(address >= type.minimum, "an accepted address is not below the minimum");
    if (end <= INT32_MAX && end >= INT32_MIN)
        require(end <= type.maximum + 1, "an accepted run ends within the maximum");
}

/// The text that the driver gives for an accepted address is accepted, too, and means the same address.
void checkReturn(const TypeRow &type, qint32 address, bool isBit)
{
    if (address > type.maximum)
        return;
    QVector<QString> texts;
    QVector<qint32> addresses;
    require(intf_multiCopy(QLatin1String(type.name), address, 1, 1, texts, addresses) == 1, "one copy is no series");
    qint32 again = -1;
    require(intf_checkAddrValidity(QLatin1String(type.name), texts.at(0), &again, 1, isBit ? 0 : 1) == 0
                && again == address && addresses.at(0) == address,
            "an address survives its text");
}

void checkText(const TypeRow &type, bool isBit, const QString &text, qint32 count)
{
    const QString name = QLatin1String(type.name);
    qint32 address = -77;
    const qint32 result = intf_checkAddrValidity(name, text, &address, count, isBit ? 0 : 1);
    qint32 again = -77;
    require(intf_checkAddr(name, text, &again, isBit ? -1 : 3, count, 1) == result && again == address,
            "both checks agree");
    require(result == 0 || result == 2 || result == 4, "result of a check");
    if (result == 4)
        require(address == (isBit ? -77 : 0), "address of a malformed text");
    if (result == 0) {
        checkAccepted(type, address, count);
        checkReturn(type, address, isBit);
    }

    qint32 untouched = -77;
    require(intf_checkAddrValidity(name, text, &untouched, count, isBit ? 1 : 0) == 1 && untouched == -77,
            "a type of the other kind is refused");
}

void copy(const TypeRow &type, FuzzInput &input)
{
    const qint32 start = input.number();
    const qint32 copies = input.count(COPIES_MOST);
    QVector<QString> texts;
    QVector<qint32> addresses;
    const qint32 result = intf_multiCopy(QLatin1String(type.name), start, copies, input.number(), texts, addresses);
    require(texts.size() == (copies < 1 ? 0 : copies) && texts.size() == addresses.size(), "number of copies");
    bool isLimited = false;
    for (int i = 0; i < addresses.size(); ++i) {
        require(addresses.at(i) <= type.maximum && !texts.at(i).isEmpty(), "copies end at the maximum");
        isLimited = isLimited || addresses.at(i) == type.maximum;
    }
    require(result == 1 || (result == 2 && isLimited), "result of a series");
}

void describeAnything(const QString &name)
{
    QList<QString> fields;
    require(intf_getRegDiscription(name, fields) == 0, "result of a description");
    bool isKnown = false;
    for (const TypeRow &row : TYPES)
        isKnown = isKnown || name == QLatin1String(row.name);
    require(fields.size() == (isKnown ? 5 : 0), "fields of a description");
    qint32 address = -77;
    if (!isKnown)
        require(intf_checkAddrValidity(name, name, &address, 1, 1) == 0 && address == -77, "an unknown type passes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int index = input.upTo(TYPE_COUNT - 1);
    const TypeRow &type = TYPES[index];
    const qint32 count = input.number();
    copy(type, input);
    const QString text = textOf(input);
    checkText(type, index < BIT_TYPES, text, count);
    describeAnything(text);
    return 0;
}
