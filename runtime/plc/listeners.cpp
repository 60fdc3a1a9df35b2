#include "plc/listeners.h"

namespace fins {

std::vector<Sample> firstSamples(const std::vector<Tag> &tags)
{
    const std::vector<WatchedValue> values = singleValues(tags);
    std::vector<Sample> samples;
    samples.reserve(values.size());
    for (const WatchedValue &value : values) {
        Sample sample;
        sample.index = samples.size();
        sample.name  = value.name;
        sample.unit  = value.format.unit;
        samples.push_back(std::move(sample));
    }
    return samples;
}

// ---- Subscription ------------------------------------------------------------------------------------------------

Subscription::Subscription(std::vector<Tag> tags, Plc::SamplesCall call)
    : tags_(std::move(tags)), call_(std::move(call)), latest_(firstSamples(tags_)), waits_(latest_.size(), false)
{
    order_.reserve(latest_.size());
}

// As many as one reply can change.
static const std::size_t KEPT_SAMPLES = 128;

bool Subscription::changed(std::size_t index)
{
    if (waits_[index]) {
        ++latest_[index].dropped;
        return false;
    }
    waits_[index] = true;
    order_.push_back(index);
    return true;
}

void Subscription::take()
{
    taken_.resize(order_.size());
    for (std::size_t i = 0; i < order_.size(); ++i) {
        Sample &sample = latest_[order_[i]];
        taken_[i] = sample;
        sample.dropped = 0;
        waits_[order_[i]] = false;
    }
    order_.clear();
}

void Subscription::deliver()
{
    call_(taken_);
    // The first samples are all, and further ones few: their memory is not kept.
    if (taken_.size() > KEPT_SAMPLES)
        Samples().swap(taken_);
}

// ---- Undertaking -------------------------------------------------------------------------------------------------

bool Undertaking::cancelUnsent()
{
    isToCancel = true;
    Stage expected = Stage::QUEUED;
    return stage.compare_exchange_strong(expected, Stage::CANCELLED);
}

bool Undertaking::begin()
{
    Stage expected = Stage::QUEUED;
    return stage.compare_exchange_strong(expected, Stage::BEGUN) || expected == Stage::BEGUN;
}

bool Undertaking::progress(std::size_t doneWords, std::size_t allWords)
{
    progress_ = {doneWords, allWords};
    hasProgress_ = tellsProgress;
    return hasProgress_;
}

void Undertaking::end()
{
    hasEnd_ = true;
    stage   = Stage::OVER;
}

void Undertaking::end(Outcomes result)
{
    outcomes_ = std::move(result);
    end();
}

void Undertaking::end(RecipeValues result)
{
    values_ = std::move(result);
    end();
}

void Undertaking::end(PlcFacts result)
{
    facts_ = std::move(result);
    end();
}

void Undertaking::take()
{
    takenProgress_ = progress_;
    hasTakenProgress_ = std::exchange(hasProgress_, false);
    hasTakenEnd_      = std::exchange(hasEnd_, false);
}

bool Undertaking::putBack()
{
    hasEnd_ = std::exchange(hasTakenEnd_, false) || hasEnd_;
    return hasEnd_ || hasProgress_;
}

void Undertaking::letGo()
{
    outcomesCall = nullptr;
    recipeCall   = nullptr;
    factsCall    = nullptr;
    progressCall = nullptr;
}

void Undertaking::deliver()
{
    if (std::exchange(hasTakenProgress_, false))
        progressCall(takenProgress_.first, takenProgress_.second);
    if (hasEnded() || !std::exchange(hasTakenEnd_, false))
        return;
    if (recipeCall)
        recipeCall(values_);
    else if (factsCall)
        factsCall(facts_);
    else if (outcomesCall)
        outcomesCall(outcomes_);
}

} // namespace fins
