#include "fins_runtime/plc.h"

#include "plc/engine.h"
#include "plc/listing.h"
#include "plc/value_text.h"

namespace fins {

class __attribute__((visibility("hidden"))) Plc::Impl : public std::enable_shared_from_this<Plc::Impl> {
public:
    explicit Impl(const Config &config) : setup(config), engine(std::make_unique<Engine>(setup, queue)) {}

    // Its handle may outlive the Plc.
    template <typename Listening>
    std::shared_ptr<Listening> add(const std::shared_ptr<Listening> &target)
    {
        target->onEnd = [weak = weak_from_this()] {
            if (const std::shared_ptr<Impl> impl = weak.lock())
                impl->engine->forgetEnded();
        };
        engine->add(target);
        return target;
    }

    void close()
    {
        engine->close();
        queue.wakeAll();
    }

    Setup                   setup;
    EventQueue              queue;
    std::unique_ptr<Engine> engine;
};

// ---- Operation ---------------------------------------------------------------------------------------------------

bool Operation::cancel()
{
    if (!target_)
        return false;
    auto &undertaking = static_cast<Undertaking &>(*target_);
    const bool isUnsent = undertaking.cancelUnsent();
    if (undertaking.wake)
        undertaking.wake();
    return isUnsent;
}

// ---- Plc ---------------------------------------------------------------------------------------------------------

Plc::Plc(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}
Plc::Plc(Plc &&) noexcept = default;

Plc &Plc::operator=(Plc &&other) noexcept
{
    Plc before(std::move(*this));
    impl_ = std::move(other.impl_);
    return *this;
}

Plc Plc::open(const Config &config)
{
    return Plc(std::make_shared<Impl>(config));
}

Plc::~Plc()
{
    if (!impl_)
        return;
    impl_->close();
    impl_->queue.dropAllButOutcomes();
    while (!impl_->queue.isEmpty() && impl_->queue.dispatch(std::chrono::milliseconds(0))) {
    }
}

void Plc::close()
{
    impl_->close();
}

static std::vector<Tag> resolved(const TagBook &book, const std::vector<std::string> &items)
{
    try {
        return book.resolveAll(items, Access::READ);
    } catch (const UsageError &error) {
        throw NameError(error.what());
    }
}

Watch Plc::watch(const std::vector<std::string> &items, SamplesCall call)
{
    return Watch(impl_->add(std::make_shared<Subscription>(resolved(impl_->setup.book, items), std::move(call))));
}

Samples Plc::snapshot(const std::vector<std::string> &items) const
{
    Samples samples = firstSamples(resolved(impl_->setup.book, items));
    impl_->engine->fill(samples);
    return samples;
}

// A single text is taken as people write it, with commas between several values.
static TagWrite resolvedWrite(const TagBook &book, const Assignment &assignment)
{
    if (assignment.values.size() == 1)
        return book.resolveWrite(assignment.item + "=" + textOf(assignment.values.front()));
    std::vector<std::string> texts;
    for (const Value &value : assignment.values)
        texts.push_back(textOf(value));
    TagWrite write;
    write.tag = book.resolveWithValues(assignment.item, Access::WRITE, texts, write.data);
    return write;
}

// Every assignment is told what is wrong with it, or that it is left out for another one.
static Outcomes entriesOf(const TagBook &book, const std::vector<Assignment> &values, std::vector<RecipeEntry> &entries)
{
    Outcomes outcomes;
    std::string problem;
    for (const Assignment &assignment : values) {
        Outcome outcome;
        outcome.name = assignment.item;
        outcome.fate = Fate::INVALID;
        try {
            TagWrite write = resolvedWrite(book, assignment);
            outcome.wanted = shownValue(write.tag.format, write.data);
            entries.push_back({write.tag.item, std::move(write.data), write.tag.name, write.tag.format});
        } catch (const UsageError &error) {
            outcome.text = std::string("invalid: ") + error.what();
            problem = error.what();
        }
        outcomes.push_back(std::move(outcome));
    }
    std::string overlap;
    if (problem.empty() && findOverlap(entries, overlap) < entries.size())
        problem = overlap;
    for (Outcome &outcome : outcomes) {
        if (outcome.text.empty())
            outcome.text = "invalid: " + outcome.name + " is not sent, since of the same write " + problem;
    }
    return problem.empty() ? Outcomes() : outcomes;
}

Operation Plc::write(const std::vector<Assignment> &values, OutcomesCall call, const OperationOptions &options)
{
    auto write = std::make_shared<Undertaking>(Undertaking::Kind::WRITE, options);
    write->outcomesCall = std::move(call);
    Outcomes invalid = entriesOf(impl_->setup.book, values, write->entries);
    if (invalid.empty() && !values.empty())
        return Operation(order(write));
    impl_->queue.post([&](const auto &enqueue) {
        write->end(std::move(invalid));
        enqueue(write);
    });
    return Operation(write);
}

std::shared_ptr<Target> Plc::order(const std::shared_ptr<Target> &target)
{
    const auto undertaking = std::static_pointer_cast<Undertaking>(target);
    undertaking->tellsProgress = undertaking->progressCall != nullptr;
    undertaking->wake = [weak = std::weak_ptr<Impl>(impl_)] {
        if (const std::shared_ptr<Impl> impl = weak.lock())
            impl->engine->wake();
    };
    impl_->engine->add(undertaking);
    return target;
}

Operation Plc::writeRecipe(const std::string &name, OutcomesCall call, const OperationOptions &options,
                           ProgressCall progress)
{
    const Recipe &recipe = impl_->setup.recipe(name);
    try {
        requireValues(recipe);
    } catch (const UsageError &error) {
        throw NameError(error.what());
    }
    auto write = std::make_shared<Undertaking>(Undertaking::Kind::WRITE_RECIPE, options);
    write->entries      = recipe.entries;
    write->outcomesCall = std::move(call);
    write->progressCall = std::move(progress);
    return Operation(order(write));
}

Operation Plc::readRecipe(const std::string &name, RecipeCall call, const OperationOptions &options,
                          ProgressCall progress)
{
    auto read = std::make_shared<Undertaking>(Undertaking::Kind::READ_RECIPE, options);
    read->entries      = impl_->setup.recipe(name).entries;
    read->recipeCall   = std::move(call);
    read->progressCall = std::move(progress);
    return Operation(order(read));
}

Operation Plc::ask(const std::vector<Topic> &topics, FactsCall call, const OperationOptions &options)
{
    auto inquiry = std::make_shared<Undertaking>(Undertaking::Kind::ASK, options);
    inquiry->topics    = topics;
    inquiry->factsCall = std::move(call);
    return Operation(order(inquiry));
}

std::vector<TagConfig> Plc::tags() const
{
    return listed(impl_->setup.book.tags());
}

std::vector<RecipeConfig> Plc::recipes() const
{
    return listed(impl_->setup.recipes);
}

State Plc::state() const
{
    return impl_->engine->state();
}

Handle Plc::onState(StateCall call)
{
    return Handle(impl_->add(std::make_shared<Listener<State>>(std::move(call), impl_->setup.queueLimit)));
}

Handle Plc::onMessage(MessageCall call)
{
    return Handle(impl_->add(std::make_shared<Listener<std::string>>(std::move(call), impl_->setup.queueLimit)));
}

int Plc::readyFd() const
{
    return impl_->queue.fd();
}

bool Plc::dispatch(std::chrono::milliseconds wait)
{
    const std::shared_ptr<Impl> impl = impl_; // a callback may destroy this object
    impl->queue.dispatch(wait);
    return !impl->engine->isClosed() || !impl->queue.isEmpty();
}

} // namespace fins
