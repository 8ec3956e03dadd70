"""Colours: indexed, special and dynamic ones, in all of their notations."""

NOTATIONS = (("#fff", "f0f0/f0f0/f0f0"), ("#ffffff", "ffff/ffff/ffff"), ("#fff000fff", "ffff/0000/ffff"),
             ("#aaaabbbbcccc", "aaaa/bbbb/cccc"), ("#102030", "1010/2020/3030"), ("rgb:f/0/8", "ffff/0000/8888"),
             ("rgb:f0/0a/88", "f0f0/0a0a/8888"), ("rgb:fff/000/888", "ffff/0000/8888"),
             ("rgb:f0f0/f0f0/f0f0", "f0f0/f0f0/f0f0"), ("rgbi:1/1/1", "ffff/ffff/ffff"), ("rgbi:0.5/0.5/0.5",
             "c1c1/bbbb/bbbb"),
             ("CIEXYZ:1/1/1", "ffff/ffff/ffff"), ("CIEuvY:1/1/1", "ffff/ffff/ffff"), ("CIExyY:1/1/1",
             "ffff/ffff/ffff"), ("CIELab:1/1/1", "6c6c/6767/6767"),
             ("CIELuv:1/1/1", "1616/1414/0e0e"), ("TekHVC:1/1/1", "1a1a/1313/0f0f"),
             ("red", "ffff/0000/0000"), ("DarkGreen", "0000/6464/0000"), ("dark green", "0000/6464/0000"),
             ("grey50", "7f7f/7f7f/7f7f"), ("gray100", "ffff/ffff/ffff"), ("Navy Blue", "0000/0000/8080"),
             ("SlateGrey3", "9f9f/b6b6/cdcd"), ("red3", "cdcd/0000/0000"))


def notation(spec, color):
    return (f"{spec} is a colour", rf"\e]4;200;{spec}\e\\",
            {"asks": [(r"\e]4;200;?\e\\", rf"\e]4;200;rgb:{color}\e\\")]})


def dynamic(number):
    return (f"dynamic colour {number}", "", {"asks": [
        (rf"\e]{number};#102030\e\\\e]{number};?\e\\", rf"\e]{number};rgb:1010/2020/3030\e\\"),
        (rf"\e]{number + 100}\e\\\e]{number};?\e\\", rf"(?s)\\e\]{number};rgb:(?!1010/2020)[0-9a-f/]+\\e\\\\")]})


def special(number, set_by, ask_by):
    return (f"special colour {number}, set by {set_by}, asked by {ask_by}", "", {"asks": [
        (rf"\e]{set_by};#102030\e\\\e]{ask_by};?\e\\", rf"\e]{ask_by};rgb:1010/2020/3030\e\\"),
        (rf"\e]105;{number}\e\\\e]{ask_by};?\e\\", rf"(?s)\\e\]{ask_by};rgb:(?!1010/2020)[0-9a-f/]+\\e\\\\")]})


CASES = [
    *[notation(spec, color) for spec, color in NOTATIONS],
    *[dynamic(number) for number in range(10, 20)],
    *[special(number, f"5;{number}", f"5;{number}") for number in range(5)],
    *[special(number, f"4;{256 + number}", f"4;{256 + number}") for number in range(5)],
    ("the first sixteen colours", "", {"asks": [(r"\e]4;0;?\e\\\e]4;7;?\e\\\e]4;15;?\e\\",
       r"\e]4;0;rgb:0000/0000/0000\e\\\e]4;7;rgb:e5e5/e5e5/e5e5\e\\\e]4;15;rgb:ffff/ffff/ffff\e\\")]}),
    ("the cube and the greys", "",
     {"asks": [(r"\e]4;21;?;244;?\e\\", r"\e]4;21;rgb:0000/0000/ffff\e\\\e]4;244;rgb:8080/8080/8080\e\\")]}),
    ("several colours at once", r"\e]4;1;#111111;2;#222222\e\\",
     {"asks": [(r"\e]4;1;?;2;?\e\\", r"\e]4;1;rgb:1111/1111/1111\e\\\e]4;2;rgb:2222/2222/2222\e\\")]}),
    ("several dynamic colours at once", r"\e]10;#111111;#222222\e\\",
     {"asks": [(r"\e]10;?;?\e\\", r"\e]10;rgb:1111/1111/1111\e\\\e]11;rgb:2222/2222/2222\e\\")]}),
    ("OSC 104 resets one", r"\e]4;1;#111111;2;#222222\e\\\e]104;1\e\\",
     {"asks": [(r"\e]4;1;?;2;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\\e]4;2;rgb:2222/2222/2222\e\\")]}),
    ("OSC 104 resets several", r"\e]4;1;#111111;2;#222222\e\\\e]104;1;2\e\\",
     {"asks": [(r"\e]4;1;?;2;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\\e]4;2;rgb:0000/cdcd/0000\e\\")]}),
    ("OSC 104 resets all", r"\e]4;1;#111111;2;#222222\e\\\e]104\e\\",
     {"asks": [(r"\e]4;1;?;2;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\\e]4;2;rgb:0000/cdcd/0000\e\\")]}),
    ("OSC 105 resets all special ones", r"\e]5;0;#111111;1;#222222\e\\\e]105\e\\",
     {"asks": [(r"\e]5;0;?\e\\", r"(?s)\\e\]5;0;rgb:(?!1111)[0-9a-f/]+\\e\\\\")]}),
    ("what is no colour changes nothing", r"\e]4;1;rgb:1/2\e\\\e]4;1;#12345\e\\\e]4;1;nosuchcolor\e\\" +
     r"\e]4;1;red5\e\\\e]4;1;gray101\e\\\e]4;1;gray05\e\\\e]4;1;3\e\\\e]4;1;\e\\",
     {"asks": [(r"\e]4;1;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\")]}),
    ("a colour beyond the last", "", {"asks": [(r"\e]4;999;?\e\\", "")]}),
    ("XTPUSHCOLORS and XTPOPCOLORS", r"\e[#P\e]4;1;#111111\e\\\e[#Q",
     {"asks": [(r"\e]4;1;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\")]}),
    ("XTPUSHCOLORS into an entry and XTPOPCOLORS from it", r"\e[3#P\e]4;1;#111111\e\\" +
     r"\e[#Q\e[2#Q\e[#P\e]4;1;#222222\e\\",
     {"asks": [(r"\e]4;1;?\e\\\e[#R", r"\e]4;1;rgb:2222/2222/2222\e\\\e[?1;2#Q"),
               (r"\e[3#Q\e]4;1;?\e\\", r"\e]4;1;rgb:cdcd/0000/0000\e\\"),
               (r"\e[#Q\e[11#Q\e]4;1;?\e\\\e[#R", r"\e]4;1;rgb:1111/1111/1111\e\\\e[?0;1#Q")]}),
]
