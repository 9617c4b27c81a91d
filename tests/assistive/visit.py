"""A visit to the kit in the demo host, whose panel of sentences stands in for the voice of its user."""

import sys
import unittest

from client import Client, State
from desktop import Desktop, eventually

HOST, PANEL = "Confera", "What is said"  # windows
FRIEND = "వెంకటేశ్ నాయుడు"  # with whom the stand-in's user has talked
HELLO = {"English": "Hello.", "हिंदी": "नमस्ते।", "ગુજરાતી": "નમસ્તે.", "తెలుగు": "నమస్కారం."}


class Visit(unittest.TestCase):
    written = ""  # by the host

    def setUp(self):
        self.desktop = Desktop(sys.argv[1:])
        self.addCleanup(self.end)
        self.client = Client(HOST)
        self.client.find("Open VynTranslate")

    def end(self):
        Visit.written = self.desktop.log()
        self.desktop.close()

    def moment(self, name, *expected):
        """Waits for all that is `expected` to be told; then nothing may be wrong with what is told."""
        for one in expected:
            self.client.find(one)
        eventually(lambda: not list(self.client.faults()), lambda: f"{name} without fault: {list(self.client.faults())}")

    def say(self, sentence):
        self.client.press(sentence, PANEL)

    def is_checked(self, name):
        """Whether it says so when it is asked, and said so when it came about."""
        eventually(lambda: ("checked", name) in self.client.told or State.CHECKED not in self.client.find(name).states,
                   lambda: f"“{name}” told to be checked: {self.client.told}")
        return State.CHECKED in self.client.find(name).states

    def text_of(self, side):
        """What can be read on one half of the conversation; None while there is nothing."""
        return next((node.name for node in self.client.nodes() if node.role == "label" and node.is_in(side)), None)

    def messages(self):
        return [node.name for node in self.client.nodes() if node.role == "list item"]


def main():
    result = unittest.main(argv=sys.argv[:1], verbosity=2, exit=False).result
    if not result.wasSuccessful():
        print("The host wrote:", Visit.written, sep="\n", file=sys.stderr)
    sys.exit(not result.wasSuccessful())
