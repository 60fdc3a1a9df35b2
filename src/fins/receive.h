#ifndef FINS_RECEIVE_H
#define FINS_RECEIVE_H

#include "omron_fins_ethernet.h"

// What follows from the judgement on a reply.

/// Acts on a reply of the given ReplyClass to the head of frameList, which must not be empty, and returns the result of
/// intf_dealRcvFrame. Changes:
///   rejected          errCount; at retryLimit connected, commFailed, frameList, and the job is closed as failed
///   acknowledged      commFailed, errCount; the head leaves frameList; with the last one the job is closed
///   late handshake    commFailed, errCount
///   read data         as acknowledged, and the data image and the recipe buffer; the bytes of `reply` are swapped in
///                     place when a write is in progress
/// Any other class changes nothing and gives 0.
qint32 dealCheckedReply(int replyClass, QByteArray &reply);

#endif
