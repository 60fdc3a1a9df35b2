#include "library_driver.h"

#include <algorithm>

namespace reference {

LibraryDriver *LibraryDriver::current_ = nullptr;

static QString toQt(const Text &text) { return QString::fromLatin1(text.data(), static_cast<int>(text.size())); }

static Text fromQt(const QString &text)
{
    const QByteArray latin1 = text.toLatin1();
    return Text(latin1.constData(), static_cast<std::size_t>(latin1.size()));
}

static KEY_ADDRESS toQt(const KeyAddress &item)
{
    KEY_ADDRESS key;
    key.name = toQt(item.name);
    key.keyField2 = item.keyField2;
    key.bufferOffset = item.bufferOffset;
    key.requestTag = item.requestTag;
    key.regType = toQt(item.regType);
    key.keyField6 = toQt(item.keyField6);
    key.address = item.address;
    key.dataKind = item.dataKind;
    key.count = item.count;
    std::copy(item.data.begin(), item.data.end(), key.data);
    return key;
}

static KeyAddress fromQt(const KEY_ADDRESS &key)
{
    KeyAddress item;
    item.name = fromQt(key.name);
    item.keyField2 = key.keyField2;
    item.bufferOffset = key.bufferOffset;
    item.requestTag = key.requestTag;
    item.regType = fromQt(key.regType);
    item.keyField6 = fromQt(key.keyField6);
    item.address = key.address;
    item.dataKind = key.dataKind;
    item.count = key.count;
    std::copy(key.data, key.data + BUFFER_SIZE, item.data.begin());
    return item;
}

template <class List> static List textsToQt(const std::vector<Text> &texts)
{
    List list;
    for (const Text &text : texts)
        list.append(toQt(text));
    return list;
}

template <class List> static std::vector<Text> textsFromQt(const List &list)
{
    std::vector<Text> texts;
    for (int i = 0; i < list.size(); ++i)
        texts.push_back(fromQt(list.at(i)));
    return texts;
}

LibraryDriver::LibraryDriver(const DriverFunctions &functions, const LowAddresses &addresses)
    : driver_(functions), addresses_(addresses)
{
    current_ = this;
    driver_.setAddrValueChangeCallBack(&LibraryDriver::onChange);
}

LibraryDriver::~LibraryDriver() { current_ = nullptr; }

void LibraryDriver::onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
{
    current_->callback_(stationNo, requestTag, fromQt(regType), address);
}

Int LibraryDriver::initProperty(const RuntimeMemory &, const Property &property, Int &status)
{
    return driver_.initProperty(property.hasBlock ? addresses_.block : 0, property.arg2, addresses_.recipe,
                                &status, property.text.c_str(), property.hasMutex ? addresses_.mutex : 0);
}

Int LibraryDriver::checkAddrValidity(const Text &regType, const Text &text, Int &address, Int count, Int wordAccess)
{
    return driver_.checkAddrValidity(toQt(regType), toQt(text), &address, count, wordAccess);
}

Int LibraryDriver::checkAddr(const Text &regType, const Text &text, Int &address, Int dataKind, Int count, Int mode)
{
    return driver_.checkAddr(toQt(regType), toQt(text), &address, dataKind, count, mode);
}

Int LibraryDriver::getRegListByType(Int type, std::vector<Text> &names)
{
    auto list = textsToQt<QList<QString>>(names);
    const Int result = driver_.getRegListByType(type, list);
    names = textsFromQt(list);
    return result;
}

Int LibraryDriver::getRegDiscription(const Text &regType, std::vector<Text> &fields)
{
    auto list = textsToQt<QList<QString>>(fields);
    const Int result = driver_.getRegDiscription(toQt(regType), list);
    fields = textsFromQt(list);
    return result;
}

Int LibraryDriver::multiCopy(const Text &regType, Int start, Int copies, Int step, std::vector<Text> &texts,
                             std::vector<Int> &addresses)
{
    auto            list = textsToQt<QVector<QString>>(texts);
    QVector<qint32> numbers;
    for (const Int address : addresses)
        numbers.append(address);
    const Int result = driver_.multiCopy(toQt(regType), start, copies, step, list, numbers);
    texts = textsFromQt(list);
    addresses.assign(numbers.constBegin(), numbers.constEnd());
    return result;
}

Int LibraryDriver::addrMerge(std::vector<KeyAddress> &addresses)
{
    QList<KEY_ADDRESS> list;
    for (const KeyAddress &item : addresses)
        list.append(toQt(item));
    const Int result = driver_.addrMerge(list);
    addresses.clear();
    for (int i = 0; i < list.size(); ++i)
        addresses.push_back(fromQt(list.at(i)));
    return result;
}

Int LibraryDriver::setRcpAddress(std::vector<RecipeVar> &vars)
{
    QVector<_RCP_VAR_PRO> list;
    for (const RecipeVar &var : vars)
        list.append(_RCP_VAR_PRO{var.stationNo, var.requestTag, toQt(var.regType), var.address, var.count,
                                 var.bufferOffset, var.rcpField7});
    const Int result = driver_.setRcpAddress(list);
    vars.clear();
    for (int i = 0; i < list.size(); ++i) {
        const _RCP_VAR_PRO &var = list.at(i);
        vars.push_back({var.stationNo, var.requestTag, fromQt(var.regType), var.address, var.count,
                        var.bufferOffset, var.rcpField7});
    }
    return result;
}

Int LibraryDriver::getSendFrame(Frame &out)
{
    FRAME_PRO frame;
    std::copy(out.frame.begin(), out.frame.end(), frame.frame);
    std::copy(out.value.begin(), out.value.end(), frame.value);
    frame.sendLen = out.sendLen;
    frame.rcvLen = out.rcvLen;
    frame.dataPos = out.dataPos;
    frame.dataLen = out.dataLen;
    frame.reservedField = out.reservedField;
    frame.requestId = out.requestId;
    frame.requestTag = out.requestTag;
    frame.regType = toQt(out.regType);
    frame.address = out.address;
    frame.count = out.count;
    const Int result = driver_.getSendFrame(&frame);
    std::copy(frame.frame, frame.frame + BUFFER_SIZE, out.frame.begin());
    std::copy(frame.value, frame.value + BUFFER_SIZE, out.value.begin());
    out.sendLen = frame.sendLen;
    out.rcvLen = frame.rcvLen;
    out.dataPos = frame.dataPos;
    out.dataLen = frame.dataLen;
    out.reservedField = frame.reservedField;
    out.requestId = frame.requestId;
    out.requestTag = frame.requestTag;
    out.regType = fromQt(frame.regType);
    out.address = frame.address;
    out.count = frame.count;
    return result;
}

Int LibraryDriver::dealRcvFrame(Bytes &reply, Text &info)
{
    QByteArray bytes(reinterpret_cast<const char *>(reply.data()), static_cast<int>(reply.size()));
    QString    text = toQt(info);
    const Int  result = driver_.dealRcvFrame(bytes, text);
    reply.assign(bytes.constBegin(), bytes.constEnd());
    info = fromQt(text);
    return result;
}

Int LibraryDriver::getData(Int requestTag, const Text &regType, Int address, Int count, Byte *out)
{
    return driver_.getData(requestTag, toQt(regType), address, count, out);
}

Int LibraryDriver::setData(Int requestTag, const Text &regType, Int address, Int count, const Byte *data,
                           Int requestId)
{
    return driver_.setData(requestTag, toQt(regType), address, count, data, requestId);
}

Int LibraryDriver::addConditionRead(KeyAddress &item, Int requestId)
{
    KEY_ADDRESS key = toQt(item);
    const Int   result = driver_.addConditionRead(key, requestId);
    item = fromQt(key);
    return result;
}

} // namespace reference
