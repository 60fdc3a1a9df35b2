#ifndef FINS_REPLY_CHECK_H
#define FINS_REPLY_CHECK_H

#include "omron_fins_ethernet.h"

// Judgement and description of a reply to the head of frameList, which must not be empty.

/// What a reply is.
enum ReplyClass {
    REPLY_REJECTED         = 0, // wrong length, wrong service ID, or refused because of the operating mode
    REPLY_READ             = 1, // data of a read
    REPLY_ACKNOWLEDGED     = 2, // handshake, write or mode change
    REPLY_LATE_HANDSHAKE   = 3  // handshake met by a reply without data; check_rcv_data never gets there
};

/// Classifies a reply. Changes: a first reply sets connected, SA1 and DA1; a mode refusal puts the mode change at the
/// head of frameList if that holds at most two requests.
int check_rcv_data(const quint8 *reply, int length);

/// The part of check_rcv_data for a reply without data whose length and service ID fit. Changes as above.
int checkReplyWithoutData(const quint8 *reply, int length);

/// One line about the head of frameList: tag#type address(count)(reply bytes), the address as a plain number.
QString getErrorInfo(QByteArray reply);

/// The same line for a reply of `replySize` bytes, put into `info`, whose memory serves again if it is not shared.
void putErrorInfo(qint32 replySize, QString &info);

#endif
