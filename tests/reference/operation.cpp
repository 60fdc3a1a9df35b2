#include "operation.h"

namespace reference {

static Text numbers(std::initializer_list<Int> values)
{
    Text text;
    for (const Int value : values)
        text += " " + std::to_string(value);
    return text;
}

static Text describeItems(const Operation &operation)
{
    Text text;
    for (const KeyAddress &item : operation.items)
        text += " [" + item.regType + numbers({item.address, item.count}) + " tag" + numbers({item.requestTag})
              + " kind" + numbers({item.dataKind}) + "]";
    return text;
}

static Text describeVars(const Operation &operation)
{
    Text text;
    for (const RecipeVar &var : operation.vars)
        text += " [" + var.regType + numbers({var.address, var.count}) + " tag" + numbers({var.requestTag})
              + " station" + numbers({var.stationNo}) + " offset" + numbers({var.bufferOffset}) + "]";
    return text;
}

static Text describeData(const Operation &operation)
{
    Text text = " data";
    for (std::size_t i = 0; i < operation.data.size() && i < 16; ++i)
        text += " " + std::to_string(operation.data[i]);
    return operation.data.size() > 16 ? text + " ..." : text;
}

static const char *replyName(Reply reply)
{
    switch (reply) {
    case Reply::RIGHT:        return "right";
    case Reply::WRONG_SID:    return "wrong service ID";
    case Reply::SHORT:        return "short";
    case Reply::LONG:         return "long";
    case Reply::END_CODE:     return "end code";
    case Reply::MODE_REFUSAL: return "mode refusal";
    case Reply::EMPTY:        return "empty";
    case Reply::NOISE:        return "noise";
    }
    return "?";
}

Text describe(const Operation &o)
{
    switch (o.kind) {
    case Kind::INITIALISE:
        return "initialise \"" + o.property.text + "\"" + (o.property.hasBlock ? "" : " without block")
             + (o.property.hasMutex ? "" : " without mutex");
    case Kind::WATCH:          return "watch" + describeItems(o);
    case Kind::RECIPE_PLAN:    return "recipe plan" + describeVars(o);
    case Kind::CONDITION_READ: return "condition read" + describeItems(o) + " id" + numbers({o.id});
    case Kind::WRITE:
        return "write " + o.type + numbers({o.address, o.count}) + " tag" + numbers({o.tag}) + " id" + numbers({o.id})
             + describeData(o);
    case Kind::READ:           return "read " + o.type + numbers({o.address, o.count}) + " tag" + numbers({o.tag});
    case Kind::SEND:           return "send";
    case Kind::REPLY:          return Text("reply ") + replyName(o.reply) + " noise " + std::to_string(o.noise);
    case Kind::FLAGS:          return "recipe flags" + numbers({o.count / 10, o.count % 10});
    case Kind::RECIPE_WORDS:   return "recipe words, noise " + std::to_string(o.noise);
    case Kind::CHECK_ADDRESS:
        return "check " + o.type + " \"" + o.text + "\" count" + numbers({o.count}) + " kind" + numbers({o.address})
             + " mode" + numbers({o.id});
    case Kind::COPIES:         return "copies " + o.type + numbers({o.address, o.count, o.id});
    case Kind::LISTS:          return "lists " + o.type + numbers({o.count});
    }
    return "?";
}

} // namespace reference
