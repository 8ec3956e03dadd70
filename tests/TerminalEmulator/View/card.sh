#!/bin/bash
# A test card for a terminal of 80x24: attributes, colours, lines, wide characters and pictures.
#   vt-window --picture FILE [--light] -- tests/TerminalEmulator/View/card.sh
e=$'\e['
printf '%s\n' "${e}?25l${e}1mbold${e}m ${e}2mfaint${e}m ${e}3mitalic${e}m ${e}1;3mboth${e}m ${e}5mblink${e}m ${e}7minverse${e}m ${e}8mhidden${e}m ${e}9mstrike${e}m ${e}53moverline${e}m ${e}1;2;3;4;9mall of it${e}m"
printf '%s\n' "${e}4msingle${e}m ${e}4:2mdouble${e}m ${e}4:3mcurly${e}m ${e}4:4mdotted${e}m ${e}4:5mdashed${e}m ${e}4:3;58:2::224:60:60mcoloured${e}m"$' \e]8;;https://example.org\e\\a link\e]8;;\e\\'
for base in 30 90 40 100; do
    for ((i = 0; i < 8; i++)); do printf '%s%dm %-8s%sm' "$e" $((base + i)) "$((base + i))" "$e"; done
    printf '\n'
done
for ((i = 0; i < 72; i++)); do printf '%s48;2;%d;%d;%dm ' "$e" $((i * 255 / 71)) $((128 + 127 * (i % 2))) $((255 - i * 255 / 71)); done
printf '%sm\n' "$e"
for ((i = 16; i < 88; i++)); do printf '%s38;5;%dm#' "$e" "$i"; done
printf '%sm\n' "$e"
cat <<'CARD'
┌─┬┐ ┏━┳┓ ╔═╦╗ ╒═╤╕ ╓─╥╖ ╭─┬╮ ┍┯┑ ┎┰┒ ╱╲╳ ┄┅┆┇┈┉┊┋ ╌╍╎╏ ╴╵╶╷╸╹╺╻╼╽╾╿
│ ││ ┃ ┃┃ ║ ║║ │ ││ ║ ║║ │ ││ ┝┿┥ ┠╂┨ ╲╱╳ ▁▂▃▄▅▆▇█ ▉▊▋▌▍▎▏ ▀▐▔▕ ░▒▓
├─┼┤ ┣━╋┫ ╠═╬╣ ╞═╪╡ ╟─╫╢ ├─┼┤ ┕┷┙ ┖┸┚     ▖▗▘▙▚▛▜▝▞▟ ⠁⠃⠇⡇⣇⣧⣷⣿ 🬀🬄🬎🬭🬺
└─┴┘ ┗━┻┛ ╚═╩╝ ╘═╧╛ ╙─╨╜ ╰─┴╯ ╃╄╅╆╇╈╉╊ ├┤┬┴┼ ┟┡┢┩┪┭┮┱┲┵┶┹┺┽┾
漢字 かな カナ 한글 ｆｕｌｌ  |漢|字|  é ñ ạ̊ ü  ♠♥♦♣ ∑∫√∞ →⇒ Ωλжя
😀 👍🏽 👩‍💻 🇩🇪 ❤️  ✔︎ ☺︎ 🏳️‍🌈  |😀|😀|
CARD
printf '%s30;46m main %s36;44m\ue0b0%s30m ~/src %s34;49m\ue0b0%sm \ue0b1 \ue0b2 \ue0b3 \ue0b4 \ue0b5 \ue0b6 \ue0b7 \ue0b8 \ue0ba \ue0bc \ue0be\n' "$e" "$e" "$e" "$e" "$e"
printf '\e#3Double height\n\e#4Double height\n\e#6Double width 漢字 ─┼─\n'
printf '%s100m %-24s %sm%s7m %-24s %sm\n' "$e" "rows" "$e" "$e" "meet" "$e"
printf '%s100m %-24s %sm%s7m %-24s %sm\n' "$e" "without" "$e" "$e" "a gap" "$e"
