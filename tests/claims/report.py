"""What the panel says of the writes it was given, and whether that is true.

On exit every ordered write is reported exactly once: as done, or in a line on standard error that says what became of
it. The exit code is 3 if anything is unconfirmed or was not sent, the operating mode included, else 1 if anything was
refused or differs, else 0.
"""

import collections

DONE, REFUSED, REFUSED_IN_PART, DIFFERS, UNCONFIRMED, NOT_SENT = (
    "done", "refused", "refused in part", "differs", "unconfirmed", "not sent")
OUTCOMES = (DONE, REFUSED, REFUSED_IN_PART, DIFFERS, UNCONFIRMED, NOT_SENT)
FAILED = (REFUSED, REFUSED_IN_PART, DIFFERS)

# What stands on standard error in front of the name of an item, and behind it.
MARKS = {
    DONE: ("done: ", " = "),
    REFUSED: ("refused: ", ": "),
    DIFFERS: ("differs: ", " was to be "),
    UNCONFIRMED: ("unconfirmed: ", ": "),
    NOT_SENT: ("not sent: ", ": "),
}
PART = " were written"  # ends the line of a write of several requests that was refused in part

SWITCHED = "the PLC is in MONITOR mode now"
PERHAPS_SWITCHED = "unconfirmed: the PLC may have been switched to MONITOR mode"

WRITTEN, HALF_WRITTEN, OLD = "written", "written in part", "old"  # what the PLC's memory holds in the end

FALSE_DONE = "said done, not written"
FALSE_NOT_SENT = "said not sent, written"
FALSE_FAILURE = "said refused or differing, written"
FALSE_REFUSAL = "said refused, written in part"
UNREPORTED = "not reported"
TWICE = "reported twice"
WRONG_CODE = "exit code against the rule"
ENDLESS = "did not end"
LIES = (FALSE_DONE, FALSE_NOT_SENT, FALSE_FAILURE, FALSE_REFUSAL, UNREPORTED, TWICE, WRONG_CODE, ENDLESS)

EXIT_DONE, EXIT_REFUSED, EXIT_NO_LINK = 0, 1, 3

# An ordered write: as it stands on the command line, and the value as the panel shows it.
Order = collections.namedtuple("Order", "name value")
# How a command ended: `code` is None if it did not.
Run = collections.namedtuple("Run", "code out err")


def outcomes_of(order, run, shows_on_stdout):
    """All outcomes that the panel tells of an order. With `shows_on_stdout` a value that was read back, and of which
    nothing else is said, is one that is done."""
    said = []
    for outcome, (before, behind) in MARKS.items():
        start = before + order.name + behind
        lines = [line for line in run.err.splitlines() if line.startswith(start)]
        if outcome == DONE:
            lines = [line for line in lines if line == start + order.value]
        for line in lines:
            said.append(REFUSED_IN_PART if outcome == REFUSED and line.endswith(PART) else outcome)
    if said or not shows_on_stdout:
        return said
    return [DONE] * run.out.splitlines().count(f"{order.name} = {order.value}")


def lie_of(said, held):
    """What is wrong with the outcomes told of one order, given what the memory holds; None if nothing is."""
    if len(said) != 1:
        return TWICE if said else UNREPORTED
    outcome = said[0]
    if outcome == DONE and held != WRITTEN:
        return FALSE_DONE
    if outcome == NOT_SENT and held != OLD:
        return FALSE_NOT_SENT
    if outcome in FAILED and held == WRITTEN:
        return FALSE_FAILURE
    return FALSE_REFUSAL if outcome == REFUSED and held == HALF_WRITTEN else None


def leaves_mode_open(run):
    """Whether the panel says at last that it does not know if it has switched the PLC."""
    said = [line for line in run.err.splitlines() if line in (SWITCHED, PERHAPS_SWITCHED)]
    return said[-1:] == [PERHAPS_SWITCHED]


def code_for(outcomes, mode_is_open=False):
    if UNCONFIRMED in outcomes or NOT_SENT in outcomes or mode_is_open:
        return EXIT_NO_LINK
    return EXIT_REFUSED if any(outcome in FAILED for outcome in outcomes) else EXIT_DONE


def was_killed_at_start(run):
    """Whether a signal came before the program could heed it, and so before it could send anything."""
    return run.code is not None and run.code < 0 and not run.out and not run.err


def judge(orders, held, run, is_watch):
    """The lies of one command, and how often each outcome was told. `held` has what the memory holds of each order.

    A watch may end with a higher code for reasons of its own, such as values that did not come.
    """
    if run.code is None:
        return [ENDLESS], collections.Counter()
    if was_killed_at_start(run) and set(held) == {OLD}:
        return [], collections.Counter()
    lies = []
    told = collections.Counter()
    for order, state in zip(orders, held):
        said = outcomes_of(order, run, not is_watch)
        told.update(said)
        lie = lie_of(said, state)
        if lie:
            lies.append(f"{lie}: {order.name}")
    wanted = code_for(told, leaves_mode_open(run))
    if run.code != wanted and not (is_watch and run.code in (EXIT_REFUSED, EXIT_NO_LINK) and run.code > wanted):
        lies.append(f"{WRONG_CODE}: {run.code}, not {wanted}")
    return lies, told


def lie_counts(lies, kinds=LIES):
    counts = collections.Counter(lie.partition(":")[0] for lie in lies)
    return {kind: counts[kind] for kind in kinds}
