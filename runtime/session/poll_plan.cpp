#include "session/poll_plan.h"

#include "session/watch_plan.h"

#include <algorithm>
#include <limits>

// Enough to find one word in the longest block: two for each halving.
static const int TRIALS_IN_A_ROW = 20;

void PollPlan::set(const std::vector<Item> &items, qint32 wordsPerFrame)
{
    wordsPerFrame_ = wordsPerFrame;
    pieces_ = planPieces(items, wordsPerFrame);
    reset();
    awaited_.clear();
}

void PollPlan::reset()
{
    refused_.clear();
    found_.clear();
    cuts_.clear();
    suspects_.clear();
    turns_.clear();
    left_     = 0;
    isTrial_  = false;
    isSteady_ = false;
    isWhole_  = false;
}

bool PollPlan::putBack()
{
    if (isWhole_ && !leavesAnyOut())
        return false;
    awaited_.insert(refused_.begin(), refused_.end());
    reset();
    return true;
}

// The others are not kept waiting by a long search.
QList<KEY_ADDRESS> PollPlan::nextTurn()
{
    const bool isOthersTurn = suspects_.empty() || trialsInARow_ >= TRIALS_IN_A_ROW;
    if (turns_.empty() && isOthersTurn) {
        turns_    = cycle();
        isSteady_ = suspects_.empty();
        isWhole_  = isSteady_ && turns_.size() <= 1;
    }
    isTrial_ = !suspects_.empty() && (!isOthersTurn || turns_.empty());
    if (isTrial_) {
        ++trialsInARow_;
        return toAddresses(trial());
    }
    trialsInARow_ = 0;
    if (turns_.empty())
        return {};
    const Turn turn = std::move(turns_.front());
    turns_.pop_front();
    return toAddresses(turn);
}

void PollPlan::begin(const QList<KEY_ADDRESS> &blocks)
{
    blocks_.clear();
    for (const KEY_ADDRESS &block : blocks)
        blocks_.push_back({block.regType, block.address, block.count, false});
    left_ = static_cast<int>(blocks_.size());
}

bool PollPlan::hasNextTurn(TimePoint now)
{
    if (leavesAnyOut() && suspects_.empty() && now >= retryAt_)
        tryAgain();
    left_ = static_cast<int>(blocks_.size());
    return !isWhole_;
}

// What is left out is tried on its own first, and blocks that were kept apart are joined again.
void PollPlan::tryAgain()
{
    for (const Refusal &refusal : joined(refused_, wordsPerFrame_))
        suspects_.push_back({watchedWords(refusal.block), false, false});
    awaited_.insert(refused_.begin(), refused_.end());
    refused_.clear();
    cuts_.clear();
    isSteady_ = false;
    isWhole_  = false;
}

bool PollPlan::refuse(const Item &block, std::uint16_t endCode, bool byHalves, TimePoint now)
{
    std::vector<Word> words = watchedWords(block);
    if (isTrial_ && !suspects_.empty())
        suspects_.pop_back();
    else if (!blocks_.empty())
        keepRest(block);
    retryAt_ = now + pause_;
    isSteady_ = false;
    isWhole_  = false;
    left_     = 0;
    if (byHalves && words.size() > 1) {
        const auto middle = words.begin() + static_cast<std::ptrdiff_t>(words.size() / 2);
        suspects_.push_back({{middle, words.end()}, false, false});
        suspects_.push_back({{words.begin(), middle}, true, false});
        return false;
    }
    for (const Word &word : words) {
        refused_[word] = endCode;
        found_[word]   = endCode;
        awaited_.erase(word);
    }
    return true;
}

// A refused block ends the turn. What would have followed it in the turn becomes the next one.
void PollPlan::keepRest(const Item &block)
{
    const auto isBlock = [&](const Item &other) { return shareWord(block, other); };
    std::rotate(blocks_.begin(), std::find_if(blocks_.begin(), blocks_.end(), isBlock), blocks_.end());
    const auto end = blocks_.begin() + std::clamp<int>(left_, 1, static_cast<int>(blocks_.size()));
    Turn rest;
    for (const Item &piece : pieces_) {
        for (auto other = blocks_.begin() + 1; other != end; ++other) {
            if (shareWord(piece, *other))
                rest.push_back(wordsOf(piece, other->firstWord(), other->endWord()));
        }
    }
    if (!rest.empty())
        turns_.push_front(rest);
}

// Where a block was refused and each half of it was read, something that lies between them is refused, or the length.
std::vector<Item> PollPlan::noteRead(const Item &block)
{
    if (isTrial_ && !suspects_.empty() && suspects_.back().words == watchedWords(block)) {
        const Suspect read = suspects_.back();
        suspects_.pop_back();
        if (read.isFirstHalf)
            suspects_.back().otherIsRead = true;
        else if (read.otherIsRead)
            cuts_.insert(read.words.front());
    }
    Words again;
    const auto first = awaited_.lower_bound({block.wordType(), block.firstWord()});
    const auto end   = awaited_.lower_bound({block.wordType(), block.endWord()});
    again.insert(first, end);
    awaited_.erase(first, end);
    std::vector<Item> items;
    for (const Refusal &refusal : joined(again, std::numeric_limits<qint32>::max()))
        items.push_back(refusal.block);
    return items;
}

std::vector<PollPlan::Refusal> PollPlan::takeRefusals()
{
    if (!suspects_.empty())
        return {};
    std::vector<Refusal> refusals = joined(found_, std::numeric_limits<qint32>::max());
    found_.clear();
    return refusals;
}

bool PollPlan::leavesOut(const Item &item) const
{
    const auto word = refused_.lower_bound({item.wordType(), item.firstWord()});
    return word != refused_.end() && word->first < Word{item.wordType(), item.endWord()};
}

// Words that touch each other and have the same end code, in blocks of at most `limit` words.
std::vector<PollPlan::Refusal> PollPlan::joined(const Words &words, qint32 limit)
{
    std::vector<Refusal> blocks;
    for (const auto &[word, endCode] : words) {
        Item *last = blocks.empty() || blocks.back().endCode != endCode ? nullptr : &blocks.back().block;
        if (last && last->regType == word.first && last->endWord() == word.second && last->count < limit)
            ++last->count;
        else
            blocks.push_back({{word.first, word.second, 1, false}, endCode});
    }
    return blocks;
}

std::vector<PollPlan::Word> PollPlan::watchedWords(const Item &block) const
{
    std::set<Word> words;
    for (const Item &piece : pieces_) {
        if (!shareWord(piece, block))
            continue;
        const qint32 end = std::min(piece.endWord(), block.endWord());
        for (qint32 word = std::max(piece.firstWord(), block.firstWord()); word < end; ++word)
            words.insert({block.wordType(), word});
    }
    return {words.begin(), words.end()};
}

PollPlan::Turn PollPlan::trial() const
{
    const std::vector<Word> &words = suspects_.back().words;
    const qint32 first = words.front().second;
    const qint32 end   = words.back().second + 1;
    Turn turn;
    for (const Item &piece : pieces_) {
        if (shareWord(piece, {words.front().first, first, end - first, false}))
            turn.push_back(wordsOf(piece, first, end));
    }
    return turn;
}

// All pieces without what is left out or to be tried.
std::vector<PollPlan::Part> PollPlan::parts() const
{
    Words out = refused_;
    for (const Suspect &suspect : suspects_) {
        for (const Word &word : suspect.words)
            out[word] = 0;
    }
    std::vector<Part> parts;
    bool isApart = false;
    for (const Item &piece : pieces_) {
        qint32 first = piece.firstWord();
        const auto addUpTo = [&](qint32 end) {
            if (first >= end)
                return;
            parts.push_back({wordsOf(piece, first, end), isApart});
            isApart = false;
        };
        for (qint32 at = first; at < piece.endWord(); ++at) {
            const Item word = {piece.wordType(), at, 1, false};
            const bool isOut = out.count({word.regType, at}) > 0;
            const bool isSame = !parts.empty() && shareWord(parts.back().item, word); // as of the piece before
            if (!isOut && (isSame || cuts_.count({word.regType, at}) == 0))
                continue;
            addUpTo(at);
            first   = isOut ? at + 1 : at;
            isApart = true;
        }
        addUpTo(piece.endWord());
    }
    return parts;
}

std::deque<PollPlan::Turn> PollPlan::cycle() const
{
    std::deque<Turn> turns;
    std::size_t at = 0;
    for (const Part &part : parts()) {
        const Item &item = part.item;
        const auto isFar = [&](const Turn &turn) {
            const Item &last = turn.back();
            return last.wordType() != item.wordType() || item.endWord() - last.firstWord() > wordsPerFrame_;
        };
        if (part.isApart)
            at = static_cast<std::size_t>(std::find_if(turns.begin(), turns.end(), isFar) - turns.begin());
        if (at == turns.size())
            turns.emplace_back();
        turns[at].push_back(item);
    }
    return turns;
}
