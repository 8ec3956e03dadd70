"""Modes: that they are known, change and are told (DECRQM), are saved, and do what they say."""

ANSI = (2, 4, 12, 20)
NEVER = (10, 13, 14, 38, 43, 46, 60, 80, 1070)
ALWAYS_RESET = (1, 5, 7, 10, 11, 13, 14, 15, 16, 17, 18, 19)
PRIVATE = (1, 4, 5, 6, 7, 8, 9, 12, 18, 19, 25, 30, 34, 35, 36, 40, 41, 42, 44, 45, 57, 61, 64, 66, 67, 68, 69, 73, 81,
           95, 96, 97, 98, 99, 100, 101, 102, 103, 104, 106, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1010, 1011,
           1015, 1016, 1034, 1035, 1036, 1037, 1039, 1040, 1041, 1042, 1043, 1044, 1045, 1046, 2004, 2026)


def settable(number, prefix=""):
    return (f"mode {prefix}{number} can be set and reset", "", {"asks": [
        (rf"\e[{prefix}{number}h\e[{prefix}{number}$p", rf"\e[{prefix}{number};1$y"),
        (rf"\e[{prefix}{number}l\e[{prefix}{number}$p", rf"\e[{prefix}{number};2$y")]})


def altscreen(number):
    return (f"mode {number} is the alternate screen", r"one\r\ntwo\e[3;4H" + rf"\e[?{number}h",
            {"at": "3;4", "asks": [(r"\e[2J\e[2HALT" + rf"\e[?{number}$p", rf"\e[?{number};1$y"),
                                   (rf"\e[3;4H\e[?{number}l\e[?{number}$p", rf"\e[?{number};2$y")],
             "shows": {1: "one", 2: "two"}})


CASES = [
    *[settable(number) for number in ANSI],
    *[(f"mode {number} is always reset", rf"\e[{number}h", {"asks": [(rf"\e[{number}$p",
     rf"\e[{number};4$y")]}) for number in ALWAYS_RESET],
    *[settable(number, "?") for number in PRIVATE],
    *[(f"mode ?{number} is always reset", rf"\e[?{number}h", {"asks": [(rf"\e[?{number}$p",
     rf"\e[?{number};4$y")]}) for number in NEVER],
    ("DECCOLM can be set once it is allowed", r"\e[?40h", {"asks": settable(3, "?")[2]["asks"]}),
    ("DECANM is set", r"", {"asks": [(r"\e[?2$p", r"\e[?2;1$y")]}),
    ("an unknown mode is told so", r"\e[?9999h", {"asks": [(r"\e[?9999$p\e[99$p", r"\e[?9999;0$y\e[99;0$y")]}),
    altscreen(47), altscreen(1047), altscreen(1049),
    ("47 keeps what is on the alternate screen", r"\e[?47h\e[2J\e[Halt\e[?47l\e[?47h", {"shows": {1: "alt"}}),
    ("1047 clears it on leaving", r"\e[?1047h\e[2J\e[Halt\e[?1047l\e[?47h", {"shows": {1: "   "}}),
    ("1049 clears it on entering", r"\e[?47h\e[Halt\e[?47l\e[?1049h", {"shows": {1: "   "}}),
    ("1049 brings the cursor back", r"\e[5;6H\e[?1049h\e[9;9H\e[?1049l", {"at": "5;6"}),
    ("1047 does not", r"\e[5;6H\e[?1047h\e[9;9H\e[?1047l", {"at": "9;9"}),
    ("1048 saves the cursor", r"\e[5;6H\e[?1048h\e[9;9H\e[?1048l", {"at": "5;6"}),
    ("1049 set twice clears again", r"\e[?1049habc\e[?1049h", {"shows": {1: "   "}}),
    ("1046 reset forbids the alternate screen", r"one\e[?1046l\e[?1049h", {"shows": {1: "one"}}),
    ("1046 reset leaves it", r"one\e[?47h\e[2J\e[?1046l", {"shows": {1: "one"}}),
    ("DECCOLM needs leave", r"abc\e[?3h", {"asks": [(r"\e[18t", r"\e[8;25;80t")], "shows": {1: "abc"}}),
    ("DECCOLM makes 132 columns", r"abc\e[?40h\e[5;5H\e[?3h",
     {"at": "1;1", "asks": [(r"\e[18t", r"\e[8;25;132t")], "shows": {1: "   "}, "kernel": "25x132"}),
    ("DECCOLM back makes 80", r"\e[?40h\e[?3h\e[?3l", {"asks": [(r"\e[18t", r"\e[8;25;80t")], "kernel": "25x80"}),
    ("DECCOLM resets the margins", r"\e[?40h\e[3;6r\e[?3l", {"asks": [(r"\eP$qr\e\\", r"\eP1$r1;25r\e\\")]}),
    ("DECNCSM spares the page", r"abc\e[?40;95h\e[?3h", {"shows": {1: "abc"}}),
    ("DECNCSM is not known at level 4", r"\e[64;1\x22pabc\e[?40;95h\e[?3h", {"shows": {1: "   "}}),
    ("DECLRMM is not known at level 3", r"\e[63;1\x22p\e[?69h", {"asks": [(r"\e[?69$p", r"\e[?69;0$y")]}),
    ("XTSAVE and XTRESTORE", r"\e[?7;25s\e[?7;25l\e[?7;25r", {"asks": [(r"\e[?7$p\e[?25$p", r"\e[?7;1$y\e[?25;1$y")]}),
    ("XTRESTORE of a reset mode", r"\e[?2004l\e[?2004s\e[?2004h\e[?2004r",
     {"asks": [(r"\e[?2004$p", r"\e[?2004;2$y")]}),
    ("several modes at once", r"\e[4;20h", {"asks": [(r"\e[4$p\e[20$p", r"\e[4;1$y\e[20;1$y")]}),
    ("one mouse mode at a time", r"\e[?1000h\e[?1002h",
     {"asks": [(r"\e[?1000$p\e[?1002$p", r"\e[?1000;2$y\e[?1002;1$y")]}),
    ("DECKPAM is DECNKM", r"\e=", {"asks": [(r"\e[?66$p\e>\e[?66$p", r"\e[?66;1$y\e[?66;2$y")]}),
    ("DECSCUSR changes blinking", r"\e[2 q", {"asks": [(r"\e[?12$p\e[1 q\e[?12$p", r"\e[?12;2$y\e[?12;1$y")]}),
    ("DECSET of blinking changes DECSCUSR", r"\e[4 q\e[?12h", {"asks": [(r"\eP$q q\e\\", r"\eP1$r3 q\e\\")]}),
]
