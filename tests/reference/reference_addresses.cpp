// Address entry.

#include "arithmetic.h"
#include "reference_driver.h"
#include "register_types.h"

namespace reference {

enum { CHECK_VALID = 0, CHECK_WRONG_KIND = 1, CHECK_OUT_OF_RANGE = 2, CHECK_MALFORMED = 4 };

static Int limitOf(const RegisterType &type, const char *text)
{
    Int limit = 0;
    if (type.isBit)
        parseBitAddress(text, limit);
    else
        toNumber(text, limit);
    return limit;
}

Int ReferenceDriver::checkAddrValidity(const Text &regType, const Text &text, Int &address, Int count, Int wordAccess)
{
    const RegisterType *type = findType(regType);
    if (type == nullptr)
        return CHECK_VALID;
    if (type->isBit == (wordAccess != 0))
        return CHECK_WRONG_KIND;
    if (!(type->isBit ? parseBitAddress(text, address) : toNumber(text, address)))
        return CHECK_MALFORMED;
    if (address < limitOf(*type, type->minimum) || plus(address, count) > limitOf(*type, type->maximum) + 1)
        return CHECK_OUT_OF_RANGE;
    return CHECK_VALID;
}

Int ReferenceDriver::checkAddr(const Text &regType, const Text &text, Int &address, Int dataKind, Int count, Int)
{
    return checkAddrValidity(regType, text, address, count, dataKind == -1 ? 0 : 1);
}

Int ReferenceDriver::getRegListByType(Int wanted, std::vector<Text> &names)
{
    for (const RegisterType &type : REGISTER_TYPES)
        if (wanted == (type.isBit ? 0 : 1))
            names.push_back(type.name);
    return wanted == 0 || wanted == 1 ? 1 : 0;
}

Int ReferenceDriver::getRegDiscription(const Text &regType, std::vector<Text> &fields)
{
    const RegisterType *type = findType(regType);
    if (type == nullptr)
        return 0;
    for (const char *field : {type->notation, type->minimum, type->maximum, type->isBit ? "0" : "1", "1"})
        fields.push_back(field);
    return 0;
}

static Text unsignedText(Int value) { return std::to_string(static_cast<std::uint32_t>(value)); }

Int ReferenceDriver::multiCopy(const Text &regType, Int start, Int copies, Int step, std::vector<Text> &texts,
                               std::vector<Int> &addresses)
{
    const RegisterType *type = findType(regType);
    if (type == nullptr)
        return 0;
    if (step == -2)
        step = type->isBit ? 1 : 2;
    else if (step < 1)
        step = 1;
    const Int maximum = limitOf(*type, type->maximum);
    Int result = 1;
    for (Int i = 0; i < copies; ++i) {
        const Int address = plus(start, times(i, step));
        if (address > maximum) {
            addresses.push_back(maximum);
            texts.push_back(type->maximum);
            result = 2;
            continue;
        }
        addresses.push_back(address);
        // A bit above 9 has two digits by itself.
        texts.push_back(type->isBit ? unsignedText(address / 16) + "." + unsignedText(address % 16)
                                    : unsignedText(address));
    }
    return result;
}

} // namespace reference
