"""Soft and hard reset, DECSCL, DECALN."""

CASES = [
    ("DECSTR leaves the text and the cursor", r"abc\e[5;5H\e[!p", {"at": "5;5", "shows": {1: "abc"}}),
    ("DECSTR resets modes", r"\e[4h\e[?1;6;45;69h\e[?7;25l\e[!p", {"asks": [
        (r"\e[4$p\e[?1$p\e[?6$p\e[?7$p\e[?25$p\e[?45$p\e[?69$p",
         r"\e[4;2$y\e[?1;2$y\e[?6;2$y\e[?7;1$y\e[?25;1$y\e[?45;2$y\e[?69;2$y")]}),
    ("DECSTR resets the margins", r"\e[3;6r\e[!p", {"asks": [(r"\eP$qr\e\\", r"\eP1$r1;25r\e\\")]}),
    ("DECSTR resets the rendition", r"\e[1;31m\e[!p", {"asks": [(r"\eP$qm\e\\", r"\eP1$r0m\e\\")]}),
    ("DECSTR resets the saved cursor", r"\e[5;5H\e7\e[!p\e8", {"at": "1;1"}),
    ("DECSTR resets the character sets", r"\e(0\e[!pq", {"shows": {1: "q"}}),
    ("DECSTR keeps the tabs", r"\e[1;5H\eH\e[!p\r\t", {"at": "1;5"}),
    ("DECSTR keeps the titles", r"\e]0;one\e\\\e[!p", {"asks": [(r"\e[21t", r"\e]lone\e\\")]}),
    ("RIS clears and homes", r"abc\e[5;5H\ec", {"at": "1;1", "shows": {1: "   "}}),
    ("RIS resets the tabs", r"\e[3g\ec\t", {"at": "1;9"}),
    ("RIS leaves the alternate screen", r"abc\e[?1049h\ec\e[?1049$p", {"asks": [("", r"\e[?1049;2$y")]}),
    ("RIS resets the title modes", r"\e[>0;1t\ec\e]2;ab\e\\", {"asks": [(r"\e[21t", r"\e]lab\e\\")]}),
    ("RIS ends 132 columns", r"\e[?40h\e[?3h\ec", {"asks": [(r"\e[18t", r"\e[8;25;80t")], "kernel": "25x80"}),
    ("RIS resets the margins and origin mode", r"\e[3;6r\e[?6h\ec",
     {"asks": [(r"\eP$qr\e\\\e[?6$p", r"\eP1$r1;25r\e\\\e[?6;2$y")]}),
    ("RIS resets the rendition and protection", r"\e[1m\e[1\x22q\ec",
     {"asks": [(r"\eP$qm\e\\\eP$q" + '"q' + r"\e\\", r"\eP1$r0m\e\\\eP1$r0" + '"q' + r"\e\\")]}),
    ("RIS resets the colours", r"\e]4;1;#111111\e\\\ec",
     {"asks": [(r"\e]4;1;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\")]}),
    ("DECSCL resets softly", r"abc\e[4h\e[5;5H\e7\e[64;1\x22p\e8",
     {"at": "1;1", "asks": [(r"\e[4$p", r"\e[4;2$y")], "shows": {1: "abc"}}),
    ("DECALN fills the page", r"\e[5;5H\e#8", {"at": "1;1", "shows": {1: "EEE", 25: "EEE"}}),
    ("DECALN ends origin mode", r"\e[3;6r\e[?6h\e#8", {"asks": [(r"\e[?6$p", r"\e[?6;2$y")]}),
]
