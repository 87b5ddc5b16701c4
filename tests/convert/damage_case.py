"""What the tests of damage share: random damage with a fixed seed, and batches whose log says what was taken."""

import random

from convert_case import ConvertCase

SEED = 20261122
RESULT, INPUT = 1, 2


def new_dice():
    return random.Random(SEED)


def flipped(data, dice):
    """Few bits flipped, mostly at the front, where more hangs on them."""
    damaged = bytearray(data)
    for _ in range(dice.choice((1, 1, 2, 4))):
        last = len(data) if dice.random() < 0.5 else min(len(data), 100)
        damaged[dice.randrange(last)] ^= 1 << dice.randrange(8)
    return bytes(damaged)


class DamageCase(ConvertCase):
    def results(self, *arguments, statuses):
        """What became of each input: its word in the log."""
        log = self.path("log")
        log.unlink(missing_ok=True)
        done = self.run_program("-q", "-j2", "--max-pixels", "1M", "--log", log, *arguments)
        self.assertIn(done.returncode, statuses, done.stderr[-1000:])
        fields = [line.split("\t") for line in log.read_bytes().decode(errors="replace").split("\n")[:-1]]
        return {line[INPUT].rpartition("/")[2]: line[RESULT] for line in fields}

    def require_results(self, results, expected):
        self.assertEqual(set(results), set(expected))
        self.assertEqual({name: (result, expected[name]) for name, result in results.items()
                          if result != expected[name]}, {})

    def require_sound(self, status, errors):
        # Where a batch died, its log says how far it was.
        last = self.path("log").read_bytes()[-300:] if status not in (0, 1, 2, 3) else b""
        super().require_sound(status, errors + last)
