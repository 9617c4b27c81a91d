"""The kit by keyboard alone: keys that the X server sees, and the focus that the user sees and a screen reader is told of."""

from client import State
from desktop import different_points, eventually
from visit import FRIEND, HELLO, Visit, main

RING = 60  # points of a control's surroundings that its focus changes at least


class Keyboard(Visit):
    def test_a_whole_visit(self):
        self.go_to("Open VynTranslate", "host")
        self.use("Return")
        self.home()
        self.conversation()
        self.chat()
        self.use("Escape", "Voice, " + FRIEND)
        self.use("Escape", "Open VynTranslate")
        self.assertFalse(self.client.has("Contacts"), "the kit is gone")
        self.assertTrue(self.desktop.is_running())

    # What a key does

    def focused(self):
        """The name of what has the focus; something that is shown always has."""
        return eventually(self.client.focused, "a focus").name

    def use(self, key, focus=None, shift=False):
        """Presses a key; with `focus`, what has the focus afterwards."""
        self.client.key(key, shift)
        if focus:
            eventually(lambda: self.focused() == focus, lambda: f"{key} leads to “{focus}”, not to {self.client.focused()}")

    def step(self, key, shift=False):
        """Presses a key that moves the focus. It was seen where it was, and is elsewhere afterwards."""
        before = self.client.focused()
        place = self.surroundings(before) if before else None
        picture = place and self.desktop.picture(place)
        self.client.key(key, shift)
        after = eventually(lambda: self.moved(before), lambda: f"{key} moves the focus from {before}")
        scrolled = place == self.surroundings(after)  # the row that has the focus is where the other one was
        if before and before.role not in ("panel", "dialog") and not scrolled:
            eventually(lambda: different_points(picture, self.desktop.picture(place)) > RING, f"the focus is seen on {before}")
        return after.name

    def moved(self, before):
        focused = self.client.focused()
        return focused if focused and (not before or focused.name != before.name) else None

    def surroundings(self, node):
        x, y, width, height = node.place
        return x - 8, y - 8, width + 16, height + 16

    def go_to(self, name, within=None, key="Tab", shift=False):
        """Steps until `name` has the focus; `within` is the screen that it never leaves."""
        for _ in range(30):
            focused = self.client.focused()
            if focused and focused.name == name:
                return
            self.step(key, shift)
            if within and within != "host":
                self.assertTrue(self.client.focused().is_in(within), f"{self.client.focused()} is not on {within}")
        self.fail(f"{name} is not reached by {key}")

    def round(self, within):
        """Steps all the way round, and back a step; the names that had the focus."""
        first = self.step("Tab")
        names = [first]
        while (name := self.step("Tab")) != first:
            self.assertTrue(self.client.focused().is_in(within), f"{name} is not on {within}")
            self.assertLess(len(names), 30, f"round and round: {names}")
            names.append(name)
        self.assertEqual(self.step("Tab", shift=True), names[-1])
        return names

    # The screens

    def home(self):
        self.moment("recents", f"Voice, {FRIEND}")
        names = self.round("VynTranslate")
        for name in ("Notifications", "Choose your language", "Contacts", "Recent", "Search", "Translate a conversation"):
            self.assertIn(name, names)
        self.go_to("Contacts", "VynTranslate")
        self.use("Space")
        eventually(lambda: State.SELECTED in self.client.find("Contacts").states and self.client.has("Voice, Leela Nair"), "the contacts")
        self.go_to("Search", "VynTranslate")
        for letter in "leela":
            self.client.key(letter)
        eventually(lambda: self.client.names("list item") == ["Leela Nair, +91 90000-01500"], lambda: str(self.client.names("list item")))
        self.step("Down")
        self.go_to("Voice, Leela Nair", "VynTranslate", "Right")
        self.use("Return")
        self.moment("no-account", "User is not signed up on Confera")
        for _ in range(4):
            self.use("Tab", "Ok")
        self.use("Escape", "Voice, Leela Nair")
        self.go_to("Search", "VynTranslate", shift=True)
        self.use("Escape")
        self.client.find("Voice, Anna Fernandes")
        self.go_to("Recent", "VynTranslate", shift=True)
        self.use("Return")
        self.client.find(f"Voice, {FRIEND}")
        self.go_to("Choose your language", "VynTranslate", shift=True)
        self.use("Return")
        self.moment("home-picker", "Translate from")
        self.assertEqual(sorted(self.round("Translate from")), sorted(["Close", *self.client.names("radio button")]))
        self.use("Escape", "Choose your language")

    def conversation(self):
        self.go_to("Translate a conversation", "VynTranslate")
        self.use("Return", "Conversation translator")
        self.moment("conversation", "Speaker language: English")
        names = self.round("Conversation translator")
        self.assertEqual(sorted(names), sorted(self.client.names("push button")), "every button is reached")
        self.choose("Listener language: हिंदी", "Translate to", "ગુજરાતી", "Listener language: ગુજરાતી")
        self.turn("Speaker", "Listener", HELLO["English"], HELLO["ગુજરાતી"])
        self.turn("Listener", "Speaker", HELLO["ગુજરાતી"], HELLO["English"])
        self.go_to("Swap the languages")
        self.use("Space")
        self.client.find("Speaker language: ગુજરાતી")
        self.go_to("How it works")
        self.use("Return", "How it works")
        self.moment("information", "Choose and swap languages. Tap a language to change it, or swap the two with the arrows.")
        self.use("Tab", "Close")
        self.use("Tab", "Close")
        self.use("Escape", "How it works")
        self.use("Escape", "Translate a conversation")

    def choose(self, chip, title, language, result):
        self.go_to(chip)
        self.use("Space")
        self.moment("picker", title, language)
        eventually(lambda: self.client.focused().is_in(title) or self.focused() == title, "the focus is on the sheet")
        self.go_to(language, title, "Down") if self.client.focused().role == "radio button" else self.go_to(language, title)
        self.use("Space")
        eventually(lambda: self.is_checked(language), f"{language} is marked")
        self.use("Escape", result)

    def turn(self, side, other, said, understood):
        self.go_to(f"Microphone, {side}")
        self.use("Space", f"Stop listening, {side}")
        self.say(said)
        eventually(lambda: (self.text_of(side), self.text_of(other)) == (said, understood),
                   lambda: f"“{said}” and “{understood}”: {self.text_of(side)}, {self.text_of(other)}")
        self.assertEqual(self.focused(), f"Microphone, {side}")
        self.go_to(f"Read aloud, {other}", shift=side == "Speaker")
        self.use("Return", f"Stop reading aloud, {other}")
        self.use("Return", f"Read aloud, {other}")

    def chat(self):
        self.go_to("Voice, Asha Patel", "VynTranslate")
        self.go_to(f"Voice, {FRIEND}", "VynTranslate", "Down")
        pane = f"Voice chat with {FRIEND}"
        self.use("Return", pane)
        self.moment("chat", "Text message")
        before = eventually(self.messages, "messages")
        names = self.round(pane)
        self.assertEqual(names[:1] + names[2:], ["Back", "Voice Chat", "Text message"], "the messages are one stop")
        self.go_to("Voice Chat", pane)
        self.use("Space", "Stop recording")
        self.say(HELLO["ગુજરાતી"])
        self.client.find("Recorded so far: 0:04")
        self.use("Space", "Send the message")
        self.moment("recorded", "Discard the recording")
        self.go_to("Play the recording", pane)
        self.use("Space", "Stop playing the recording")
        eventually(lambda: self.focused() == "Play the recording", "the end of the recording")
        self.go_to("Send the message", pane)
        eventually(self.is_sent, "a message that is sent")
        eventually(lambda: self.messages()[-1] != before[-1], "the own message")
        self.moment("sent", "Voice Chat")
        self.assertEqual(self.focused(), "Voice Chat")
        theirs = next(name for name in reversed(self.messages()) if name.startswith(FRIEND))
        self.go_to(f"Play, {self.messages()[-1]}", pane, shift=True)
        self.go_to(f"Play, {theirs}", pane, "Up")
        self.use("Return", f"Stop playing, {theirs}")
        self.use("Return", f"Play, {theirs}")

    def is_sent(self):
        """Presses the key until it works: as long as nothing is recognised, there is nothing to send."""
        if self.client.has("Send the message"):
            self.use("Space")
        return self.client.has("Voice Chat")


if __name__ == "__main__":
    main()
