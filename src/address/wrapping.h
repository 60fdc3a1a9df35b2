#ifndef ADDRESS_WRAPPING_H
#define ADDRESS_WRAPPING_H

#include <QtCore/QtGlobal>

// Arithmetic on addresses and counts that the runtime supplies: two's complement, wrapping, never trapping.

inline qint32 wrapAdd(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) + static_cast<quint32>(b));
}

inline qint32 wrapSub(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) - static_cast<quint32>(b));
}

inline qint32 wrapMul(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) * static_cast<quint32>(b));
}

#endif
