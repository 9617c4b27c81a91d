"""What an assistive tool knows of a program: roles, names, states and actions, told over the accessibility bus (AT-SPI)."""

import functools

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from desktop import eventually  # noqa: E402

State = Atspi.StateType
PRESSABLE = {"push button", "page tab", "radio button"}
KEYS = {"Tab": 0xFF09, "Return": 0xFF0D, "Escape": 0xFF1B, "Space": 0x20, "Up": 0xFF52, "Down": 0xFF54, "Left": 0xFF51,
        "Right": 0xFF53, "Page_Down": 0xFF56, "BackSpace": 0xFF08}
SHIFT = 50  # key code


class Node:
    """An object as it was told of; each of its properties is a question to the program, asked once."""

    def __init__(self, accessible, ancestors):
        self.accessible = accessible
        self.name = accessible.get_name()
        self.states = set(accessible.get_state_set().get_states())
        self.ancestors = ancestors

    def __repr__(self):
        return f"{self.role} “{self.name}”"

    @functools.cached_property
    def role(self):
        return self.accessible.get_role_name()

    @classmethod
    def with_ancestors(cls, accessible):
        ancestors = []
        parent = accessible
        while (parent := parent.get_parent()) and parent.get_role() != Atspi.Role.APPLICATION:
            ancestors.insert(0, cls(parent, list(ancestors)))
        return cls(accessible, ancestors)

    def is_in(self, name):
        return any(ancestor.name == name for ancestor in self.ancestors)

    @functools.cached_property
    def description(self):
        return self.accessible.get_description()

    @functools.cached_property
    def place(self):
        extents = Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN)
        return extents.x, extents.y, extents.width, extents.height

    @functools.cached_property
    def actions(self):
        if "Action" not in self.accessible.get_interfaces():
            return []
        return [Atspi.Action.get_action_name(self.accessible, i) for i in range(Atspi.Action.get_n_actions(self.accessible))]

    def do(self, action):
        Atspi.Action.do_action(self.accessible, self.actions.index(action))


class Client:
    """Everything that is shown in the windows of the program on this desktop."""

    def __init__(self, frame):
        Atspi.init()
        self.frame = frame  # the title of the window that is looked at
        self.told = []  # what the program told unasked: pairs of a state and the name of what has got it
        self._focus = None
        self._listener = Atspi.EventListener.new(self._hear)
        for state in ("focused", "checked", "selected"):
            self._listener.register(f"object:state-changed:{state}")

    def _hear(self, event):
        state = event.type.rsplit(":", 1)[1]
        if state == "focused" and event.detail1:
            self._focus = event.source
        elif event.detail1 and event.source:
            self.told.append((state, event.source.get_name()))

    def _listen(self):
        while GLib.MainContext.default().iteration(False):
            pass

    def nodes(self, frame=None):
        """All that the window shows, in reading order."""
        self._listen()
        found = []

        def visit(accessible, ancestors):
            try:
                node = Node(accessible, ancestors)
                if State.SHOWING not in node.states:
                    return
                children = [accessible.get_child_at_index(i) for i in range(accessible.get_child_count())]
            except GLib.GError:  # gone meanwhile
                return
            found.append(node)
            for child in filter(None, children):
                visit(child, [*ancestors, node])

        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            program = desktop.get_child_at_index(index)
            for window in range(program.get_child_count() if program else 0):
                if (top := program.get_child_at_index(window)) and top.get_name() == (frame or self.frame):
                    visit(top, [])
        return found

    def names(self, role=None):
        return [node.name for node in self.nodes() if not role or node.role == role]

    def has(self, name):
        return name in self.names()

    def find(self, name, frame=None):
        """What has this name; waits until there is such a thing."""
        return eventually(lambda: next((node for node in self.nodes(frame) if node.name == name), None),
                          lambda: f"“{name}” among {self.nodes(frame)}")

    def press(self, name, frame=None):
        self.find(name, frame).do("Press")

    def focused(self):
        """What the program last told to have got the focus, if it still has it and is shown; else None."""
        self._listen()
        try:
            node = self._focus and Node.with_ancestors(self._focus)
        except GLib.GError:  # gone meanwhile
            return None
        return node if node and {State.FOCUSED, State.SHOWING} <= node.states else None

    def faults(self):
        """A sentence for everything an assistive tool would stumble over."""
        nodes = self.nodes()
        window = nodes[0].place
        for node in nodes:
            x, y, width, height = node.place
            rolls = any(ancestor.role == "list" for ancestor in node.ancestors)
            inside = x >= window[0] and y >= window[1] and x + width <= window[0] + window[2] and y + height <= window[1] + window[3]
            if node.role in PRESSABLE | {"text", "list", "dialog", "alert"} and not node.name.strip():
                yield f"{node} has no name"
            if node.role in PRESSABLE and "Press" not in node.actions:
                yield f"{node} cannot be pressed: {node.actions}"
            if node.role in PRESSABLE | {"text"} and State.FOCUSABLE not in node.states:
                yield f"{node} is out of the keyboard's reach"
            if node.role in PRESSABLE | {"text"} and (width < 44 or height < 44):
                yield f"{node} is too small: {width} x {height}"
            if node.role in PRESSABLE | {"text", "label", "heading"} and not rolls and not inside:
                yield f"{node} is outside the window: {node.place}"
        controls = [node for node in nodes if node.role in PRESSABLE and not any(a.role == "list" for a in node.ancestors)]
        for index, one in enumerate(controls):
            for other in controls[index + 1:]:
                (x, y, width, height), (left, top, wide, high) = one.place, other.place
                if x < left + wide and left < x + width and y < top + high and top < y + height:
                    yield f"{one} lies over {other}"

    @staticmethod
    def key(name, shift=False):
        """A key that the X server sees pressed and let go; `name` one of KEYS or a letter."""
        if shift:
            Atspi.generate_keyboard_event(SHIFT, None, Atspi.KeySynthType.PRESS)
        Atspi.generate_keyboard_event(KEYS.get(name) or ord(name), None, Atspi.KeySynthType.SYM)
        if shift:
            Atspi.generate_keyboard_event(SHIFT, None, Atspi.KeySynthType.RELEASE)
