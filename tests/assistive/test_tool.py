"""The whole kit by names, roles and actions alone, from another process, as a screen reader's user goes through it."""

from client import State
from desktop import eventually
from visit import FRIEND, HELLO, Visit, main


class AssistiveTool(Visit):
    def test_a_whole_visit(self):
        self.client.press("Open VynTranslate")
        self.home()
        self.conversation()
        self.chat()
        self.client.press("Back")
        self.moment("home-again", "Translate a conversation")
        # Leaving is the keyboard's: there is no button for it, because the host opened the kit.
        self.client.key("Escape")
        self.moment("host", "Open VynTranslate")
        self.assertFalse(self.client.has("Contacts"), "the kit is gone")
        self.assertTrue(self.desktop.is_running())

    def home(self):
        client = self.client
        self.moment("recents", "Recent", f"Voice, {FRIEND}")
        self.assertFalse(client.has("Open VynTranslate"), "what the kit covers is not read")
        self.assertIn(State.SELECTED, client.find("Recent").states)
        client.press("Contacts")
        eventually(lambda: State.SELECTED in client.find("Contacts").states and client.has("Voice, Anna Fernandes"), "the contacts")
        self.assertNotIn(State.SELECTED, client.find("Recent").states)
        self.moment("contacts")

        # A row below the others comes into sight when it is gone to.
        last = [node for node in client.nodes() if node.name.startswith("Voice, ")][-1]
        last.do("SetFocus")
        rows = next(node for node in client.nodes() if node.role == "list").place
        eventually(lambda: client.find(last.name).place[1] + last.place[3] <= rows[1] + rows[3], "the last row in sight")

        client.find("Search").do("SetFocus")
        for letter in "george":
            client.key(letter)
        eventually(lambda: [n for n in client.names("list item")] == ["George Thomas, 90000 01501"], lambda: str(client.names("list item")))
        self.moment("search", "Clear the search")
        client.press("Voice, George Thomas")
        self.moment("no-account", "User is not signed up on Confera", "Ok")
        self.assertEqual(client.names("push button"), ["Ok"], "nothing else is in reach")
        client.press("Ok")
        client.press("Clear the search")
        client.press("Recent")
        client.find(f"Voice, {FRIEND}")

        client.press("Choose your language")
        self.moment("home-picker", "Translate from", *HELLO)
        self.assertTrue(self.is_checked("English"))
        self.assertFalse(client.has("Contacts"), "what the picker covers is not read")
        client.press("Close")
        eventually(lambda: not client.has("Translate from"), "the picker goes")
        eventually(lambda: client.focused().name == "Choose your language", "the focus is back")

    def conversation(self):
        client = self.client
        client.press("Translate a conversation")
        self.moment("conversation", "Speaker language: English", "Listener language: हिंदी", "Press mic to begin conversation")
        self.choose("Speaker language: English", "Translate from", "తెలుగు", "Speaker language: తెలుగు")
        self.turn("Speaker", "Listener", HELLO["తెలుగు"], HELLO["हिंदी"])
        self.choose("Listener language: हिंदी", "Translate to", "ગુજરાતી", "Listener language: ગુજરાતી")
        self.turn("Listener", "Speaker", HELLO["ગુજરાતી"], HELLO["తెలుగు"])
        client.press("Swap the languages")
        self.moment("swapped", "Speaker language: ગુજરાતી", "Listener language: తెలుగు")
        client.press("How it works")
        self.moment("information", "Share one device. Lay it between you. Each of you has a half that faces you.")
        self.assertFalse(client.has("Swap the languages"), "what the page covers is not read")
        client.press("Close")
        client.find("Swap the languages")
        client.press("Back")
        client.find("Contacts")

    def choose(self, chip, title, language, result):
        self.client.press(chip)
        self.moment("picker", title, language)
        self.assertFalse(self.client.has("Swap the languages"), "what the picker covers is not read")
        self.client.press(language)
        eventually(lambda: self.is_checked(language), f"{language} is marked")
        self.client.press("Close")
        eventually(lambda: not self.client.has(title), "the picker goes")
        self.client.find(result)
        eventually(lambda: self.client.focused().name == result, "the focus is on the button that opened the picker")

    def turn(self, side, other, said, understood):
        client = self.client
        client.press(f"Microphone, {side}")
        self.moment("listening", f"Stop listening, {side}", f"Microphone off, {other}")
        self.assertTrue(self.is_checked(f"Stop listening, {side}"))
        self.assertEqual(client.find(side).description, "Listening")
        self.say(said)
        eventually(lambda: (self.text_of(side), self.text_of(other)) == (said, understood),
                   lambda: f"“{said}” and “{understood}”: {self.text_of(side)}, {self.text_of(other)}")
        self.assertFalse(self.is_checked(f"Microphone, {side}"))
        client.press(f"Read aloud, {other}")
        self.assertTrue(self.is_checked(f"Stop reading aloud, {other}"))
        self.moment("reading-aloud", f"Read aloud, {other}")

    def chat(self):
        client = self.client
        client.press(f"Voice, {FRIEND}")
        self.moment("chat", f"Voice chat with {FRIEND}", "Messages", "Text message")
        before = eventually(self.messages, "messages")
        self.assertTrue({name.rsplit(", ", 1)[0] for name in before} == {"Asha Patel", FRIEND}, f"both are named: {before}")
        places = [node.place[1] for node in client.nodes() if node.role == "list item"]
        self.assertEqual(places, sorted(places), "rows are read from the top")

        client.press("Voice Chat")
        self.moment("recording", "Recording", "Stop recording")
        self.say(HELLO["ગુજરાતી"])
        client.find("Recorded so far: 0:04")
        client.press("Stop recording")
        self.moment("recorded", "Recorded message", "Discard the recording")
        client.press("Play the recording")
        self.assertTrue(self.is_checked("Stop playing the recording"))
        client.find("Play the recording")
        eventually(self.is_sent, "a message that is sent")
        eventually(lambda: self.messages()[-1] != before[-1], "the own message")
        self.moment("sent", "Voice Chat")
        self.assertTrue(self.messages()[-1].startswith("Asha Patel, "))

        theirs = next(name for name in reversed(self.messages()) if name.startswith(FRIEND))
        client.press(f"Play, {theirs}")
        self.assertTrue(self.is_checked(f"Stop playing, {theirs}"))
        self.moment("played", f"Play, {theirs}")

    def is_sent(self):
        """Presses the button until it works: as long as nothing is recognised, there is nothing to send."""
        for node in self.client.nodes():
            if node.name == "Send the message":
                node.do("Press")
        return self.client.has("Voice Chat")


if __name__ == "__main__":
    main()
