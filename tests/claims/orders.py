"""Commands that write, drawn by a seed: each with items, values and addresses of its own."""

import collections
import random

from fault_proxy import FATES, Faults
from report import Order

BLOCK_WORDS = 128      # of DM, for one command
BLOCKS = 200           # so many commands are under way or just ended at most
FIRST_REFUSED = 600    # HR words beyond the memory of the profile
LAST_REFUSED = 1500

WRITE, WATCH, RECIPE = "write", "watch", "recipe"

Place = collections.namedtuple("Place", "word bit words")  # in DM; bit and words None where they do not matter

# A command: `places` belongs to `orders`, None standing for a write that the PLC refuses. `fill` is what its block of
# DM holds before. `signal` is None or (name, seconds after the start).
Command = collections.namedtuple("Command", "number kind arguments recipe orders places first_word fill faults signal")


def draw_faults(dice):
    """Some links are nearly sound; on others a fault or two are frequent."""
    return Faults(*[dice.choice((0, 0.01, 0.03, 0.1)) for _ in FATES], delay_ms=dice.choice((20, 100)),
                  hold_ms=dice.choice((100, 1000, 2000)))


class Drawing:
    """The drawing of one command."""

    def __init__(self, seed, number):
        self.dice = random.Random(f"{seed} {number}")
        self.number = number
        self.first_word = number % BLOCKS * BLOCK_WORDS
        self.next_word = self.first_word
        self.orders, self.places = [], []
        self.refused_words = set()
        # Old values are 0, or differ in every bit from all that is written.
        self.fill = self.dice.choice((0, 0xFFFF))

    def fresh_value(self, word):
        """Differs from word to word, and from what stood there and in the command before at the same address."""
        return (self.number * BLOCK_WORDS + word - self.first_word) % 65533 + 1

    def add(self, name, words, place):
        self.orders.append(Order(name, " ".join(map(str, words))))
        self.places.append(place)

    def add_words(self, count, shows_count):
        word = self.next_word
        self.next_word += count
        words = [self.fresh_value(at) for at in range(word, word + count)]
        self.add(f"DM:{word}:{count}" if shows_count else f"DM:{word}", words, Place(word, None, words))

    def add_bit(self):
        word, bit = self.next_word, self.dice.randrange(16)
        self.next_word += 1
        self.add(f"DM_bit:{word}.{bit}", [0 if self.fill else 1], Place(word, bit, None))

    def add_refused(self):
        word = self.dice.choice([w for w in range(FIRST_REFUSED, LAST_REFUSED) if w not in self.refused_words])
        self.refused_words.add(word)
        self.add(f"HR:{word}", [self.fresh_value(self.first_word + word % BLOCK_WORDS)], None)

    def add_any(self, kind):
        drawn = self.dice.random()
        if drawn < 0.03:
            self.add_refused()
        elif drawn < 0.2 and kind != RECIPE:
            self.add_bit()
        elif drawn < 0.5 and kind != WATCH:
            self.add_words(self.dice.randint(2, 6), True)
        else:
            self.add_words(1, False)
        # Where there is a gap, a further request is needed.
        self.next_word += self.dice.choice((0, 0, 0, 1))

    def link_options(self, kind):
        options = ["--timeout", str(self.dice.randint(30, 60)), "--retries", str(self.dice.choice((1, 1, 2, 3))),
                   "--words-per-frame", str(self.dice.choice((1, 2, 4, 16, 64)))]
        if kind != WATCH:
            options += ["--give-up", f"{self.dice.uniform(1, 2):.1f}"]
        return options

    def assignments(self):
        return [f"{order.name}={order.value.replace(' ', ',')}" for order in self.orders]

    def watch_arguments(self):
        """The items that are written are watched or not, and one that is not written always."""
        arguments = [order.name for order in self.orders if self.dice.random() < 0.5]
        arguments += [f"DM:{self.first_word + BLOCK_WORDS - 1}"]
        longest = self.dice.choice((self.dice.uniform(0.1, 1.5), 3))
        arguments += ["--for", f"{longest:.2f}"]
        if self.dice.random() < 0.4:
            arguments += ["--changes", str(self.dice.randint(1, 3))]
        for assignment in self.assignments():
            arguments += ["--write", assignment]
        return arguments

    def signal(self, kind):
        """A watch often ends by a signal, the others now and then."""
        if self.dice.random() < (0.5 if kind == WATCH else 0.1):
            return self.dice.choice(("SIGINT", "SIGTERM")), self.dice.uniform(0.02, 1)
        return None

    def command(self):
        kind = self.dice.choices((WRITE, WATCH, RECIPE), (5, 3, 3))[0]
        for _ in range(self.dice.randint(1, 3 if kind == WATCH else self.dice.choice((4, 10, 20)))):
            self.add_any(kind)
        options = self.link_options(kind)
        if kind != RECIPE and self.dice.random() < 0.5:
            options.append("--keep-going")
        recipe = None
        if kind == WRITE:
            options += self.assignments()
        elif kind == WATCH:
            options += self.watch_arguments()
        else:
            recipe = "".join(f"{order.name} = {order.value}\n" for order in self.orders)
        return Command(self.number, kind, options, recipe, self.orders, self.places, self.first_word, self.fill,
                       draw_faults(self.dice), self.signal(kind))


def draw_command(seed, number):
    return Drawing(seed, number).command()
