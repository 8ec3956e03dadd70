"""The window: its size, state, titles, and the clipboard."""

TITLES = r"\e]2;one\e\\\e]1;uno\e\\"
OTHER = r"\e]0;zwei\e\\"
ASK = r"\e[21t\e[20t"


def titles(window, icon):
    return [(ASK, rf"\e]l{window}\e\\\e]L{icon}\e\\")]


def size(rows, columns):
    return {"asks": [(r"\e[18t", rf"\e[8;{rows};{columns}t"), (r"\e[14t", rf"\e[4;{rows * 16};{columns * 8}t")],
     "kernel": f"{rows}x{columns}"}


CASES = [
    ("resize in characters", r"\e[8;30;100t", size(30, 100)),
    ("resize leaves out the rows", r"\e[8;;100t", size(25, 100)),
    ("resize leaves out the columns", r"\e[8;30t", size(30, 80)),
    ("resize to 0 rows is the screen's height", r"\e[8;0;80t",
     {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;(\d+);80t\\e\[9;\1;\d+t")]}),
    ("resize to 0 columns is the screen's width", r"\e[8;25;0t",
     {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;25;(\d+)t\\e\[9;\d+;\1t")]}),
    ("resize in pixels", r"\e[4;480;800t", size(30, 100)),
    ("resize in pixels leaves out the height", r"\e[4;;800t", size(25, 100)),
    ("resize in pixels leaves out the width", r"\e[4;480t", size(30, 80)),
    ("resize to 0 pixels of height", r"\e[4;0;640t",
     {"asks": [(r"\e[14t\e[15t", r"(?s)\\e\[4;1072;640t\\e\[5;1080;1920t")]}),
    ("DECSLPP", r"\e[30t", size(30, 80)),
    ("DECSNLS", r"\e[36*|", size(36, 80)),
    ("DECSCPP", r"\e[?40h\e[132$|", size(25, 132)),
    ("maximize", r"\e[9;1t", {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;(\d+;\d+)t\\e\[9;\1t")]}),
    ("maximize in height", r"\e[9;2t", {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;(\d+);80t\\e\[9;\1;\d+t")]}),
    ("maximize in width", r"\e[9;3t", {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;25;(\d+)t\\e\[9;\d+;\1t")]}),
    ("restore", r"\e[9;1t\e[9;0t", size(25, 80)),
    ("full screen", r"\e[10;1t", {"asks": [(r"\e[18t\e[19t", r"(?s)\\e\[8;(\d+;\d+)t\\e\[9;\1t")]}),
    ("end of full screen", r"\e[10;1t\e[10;0t", size(25, 80)),
    ("full screen toggled twice", r"\e[10;2t\e[10;2t", size(25, 80)),
    ("iconify", r"\e[2t", {"asks": [(r"\e[11t\e[1t\e[11t", r"\e[2t\e[1t")]}),
    ("move", r"\e[3;10;20t", {"asks": [(r"\e[13t\e[13;2t", r"\e[3;10;20t\e[3;10;20t")]}),
    ("move to the defaults", r"\e[3;10;20t\e[3;;20t", {"asks": [(r"\e[13t", r"\e[3;0;20t")]}),
    ("size of a character", "", {"asks": [(r"\e[16t", r"\e[6;16;8t")]}),
    ("size of the screen", "", {"asks": [(r"\e[15t\e[19t", r"\e[5;1080;1920t\e[9;67;240t")]}),
    ("size of the window", "", {"asks": [(r"\e[14;2t", r"\e[4;400;640t")]}),
    ("titles", TITLES, {"asks": titles("one", "uno")}),
    ("one for both", OTHER, {"asks": titles("zwei", "zwei")}),
    ("a title has no controls", r"\e]2;a\rb\x0bc\e\\", {"asks": [(r"\e[21t", r"\e]labc\e\\")]}),
    ("a title in broken hexadecimal is none", r"\e[>0t\e]2;6162\e\\\e]2;6z\e\\\e]2;616\e\\",
     {"asks": [(r"\e[21t", r"\e]lab\e\\")]}),
    ("a title may have semicolons", r"\e]2;a;b\e\\", {"asks": [(r"\e[21t", r"\e]la;b\e\\")]}),
    ("a title in UTF-8", r"\e]2;\xc3\xa4\e\\", {"asks": [(r"\e[21t", r"\e]l\xc3\xa4\e\\")]}),
    ("hexadecimal in", r"\e[>0t\e]2;6162\e\\\e]1;61\e\\", {"asks": titles("ab", "a")}),
    ("hexadecimal out", r"\e]2;ab\e\\\e]1;a\e\\\e[>1t", {"asks": titles("6162", "61")}),
    ("hexadecimal in and out", r"\e[>0;1t\e]2;6162\e\\\e]1;61\e\\", {"asks": titles("6162", "61")}),
    ("hexadecimal off", r"\e[>0;1t\e[>0;1T\e]2;6162\e\\\e]1;61\e\\", {"asks": titles("6162", "61")}),
    ("push and pop both", TITLES + r"\e[22;0t" + OTHER + r"\e[23;0t", {"asks": titles("one", "uno")}),
    ("pop the icon name", TITLES + r"\e[22;0t" + OTHER + r"\e[23;1t", {"asks": titles("zwei", "uno")}),
    ("pop the title", TITLES + r"\e[22;0t" + OTHER + r"\e[23;2t", {"asks": titles("one", "zwei")}),
    ("push and pop the icon name", TITLES + r"\e[22;1t" + OTHER + r"\e[23;1t", {"asks": titles("zwei", "uno")}),
    ("push and pop the title", TITLES + r"\e[22;2t" + OTHER + r"\e[23;2t", {"asks": titles("one", "zwei")}),
    ("push one after the other and pop both", TITLES + r"\e[22;1t\e[22;2t" + OTHER + r"\e[23;0t",
     {"asks": titles("one", "uno")}),
    ("a pushed icon name brings no title back", TITLES + r"\e[22;1t" + OTHER + r"\e[23;0t",
     {"asks": titles("zwei", "uno")}),
    ("a pushed title brings no icon name back", TITLES + r"\e[22;2t" + OTHER + r"\e[23;1t",
     {"asks": titles("zwei", "zwei")}),
    ("what the top does not have comes from below", TITLES + r"\e[22;1t" + OTHER + r"\e[22;2t\e]0;x\e\\\e[23;0t",
     {"asks": titles("zwei", "uno")}),
    ("the oldest of more pushes than fit are lost", TITLES + r"\e[22t" + OTHER + r"\e[22t" * 10 +
     r"\e]0;x\e\\" + r"\e[23t" * 11, {"asks": titles("zwei", "zwei")}),
    ("two pushes, two pops", TITLES + r"\e[22;0t" + OTHER + r"\e[22;0t\e]0;x\e\\\e[23;0t\e[23;0t",
     {"asks": titles("one", "uno")}),
    ("pop from an empty stack does nothing", r"\e[23t" * 10 + TITLES + r"\e[23;0t", {"asks": titles("one", "uno")}),
    ("a place on the stack by number", TITLES + r"\e[22;0;3t" + OTHER + r"\e[22;0t\e]0;x\e\\\e[23;0;3t",
     {"asks": titles("one", "uno")}),
    ("OSC 52", r"\e]52;c;aGVsbG8=\e\\", {"asks": [(r"\e]52;c;?\e\\", r"\e]52;c;aGVsbG8=\e\\")]}),
    ("OSC 52 without a selection", r"\e]52;;aGVsbG8=\e\\", {"asks": [(r"\e]52;;?\e\\", r"\e]52;s0;aGVsbG8=\e\\")]}),
    ("a resize keeps the text", r"abc\e[8;30;100t", {"shows": {1: "abc"}}),
]
