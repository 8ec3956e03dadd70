// feed-libvterm FILE COLUMNS ROWS SCROLLBACK: seconds libvterm takes for the file, its scrollback kept as its users
// do.

#include "feed.h"

#include <deque>
#include <vector>
#include <vterm.h>

namespace
{

struct Host {
    VTerm *terminal = nullptr;
    std::deque<std::vector<VTermScreenCell>> lines;
    size_t limit = 0;
};

int pushLine(int columns, const VTermScreenCell *cells, void *user)
{
    auto *host = static_cast<Host *>(user);
    host->lines.emplace_back(cells, cells + columns);
    if (host->lines.size() > host->limit) {
        host->lines.pop_front();
    }
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    const Job job = Job::parse(argc, argv);
    Host host;
    host.limit = static_cast<size_t>(job.scrollback);
    host.terminal = vterm_new(job.rows, job.columns);
    vterm_set_utf8(host.terminal, 1);
    VTermScreen *screen = vterm_obtain_screen(host.terminal);
    VTermScreenCallbacks callbacks = {};
    callbacks.sb_pushline = pushLine;
    vterm_screen_set_callbacks(screen, &callbacks, &host);
    vterm_screen_set_damage_merge(screen, VTERM_DAMAGE_SCROLL);
    vterm_screen_enable_altscreen(screen, 1);
    vterm_screen_reset(screen, 1);
    job.run([&](const char *bytes, size_t size) { vterm_input_write(host.terminal, bytes, size); },
            [&] { vterm_screen_flush_damage(screen); });
    vterm_free(host.terminal);
    return 0;
}
