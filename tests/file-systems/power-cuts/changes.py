"""The changes that are made to one archive, the same for the same seed."""

import random


class Changes:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.state = {}
        self.number = 0

    def content(self):
        return self.random.randbytes(self.random.choice([100, 3000, 40000, 300000]))

    def next(self):
        """Makes the next change in `state`: returns its kind and the entry's name."""
        kind = self.random.choice(['add', 'replace', 'remove'])
        if kind == 'add' or len(self.state) < 3:
            self.number += 1
            kind, name = 'add', f'e{self.number}'
        else:
            name = self.random.choice(sorted(self.state))
        if kind == 'remove':
            del self.state[name]
        else:
            self.state[name] = self.content()
        return kind, name


def state_after(seed, count):
    changes = Changes(seed)
    for _ in range(count):
        changes.next()
    return changes.state
