#include "terminal_c.h"

#include "TerminalEmulator/Engine/Terminal.h"

#include <algorithm>
#include <string>

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace
{

struct Face {
    vt::Terminal terminal;
    std::string replies;

    explicit Face(const vt::Options &options)
        : terminal(options)
    {
    }
};

Face &face(void *terminal)
{
    return *static_cast<Face *>(terminal);
}

} // namespace

EXPORT void *t_open(int cols, int rows, int scrollback)
{
    vt::Options options;
    options.columns = cols;
    options.rows = rows;
    options.scrollback = scrollback;
    return new Face(options);
}

EXPORT void t_feed(void *terminal, const char *bytes, size_t size)
{
    face(terminal).terminal.feed({bytes, size});
}

EXPORT size_t t_reply(void *terminal, char *out, size_t cap)
{
    Face &target = face(terminal);
    target.replies += target.terminal.takeReplies();
    const size_t count = std::min(cap, target.replies.size());
    std::copy_n(target.replies.begin(), count, out);
    target.replies.erase(0, count);
    return count;
}

EXPORT uint32_t t_cell(void *terminal, int row, int col)
{
    const vt::Terminal &target = face(terminal).terminal;
    return target.firstCodePoint(target.cell(row, col));
}

EXPORT int t_history(void *terminal)
{
    return face(terminal).terminal.savedLines();
}

EXPORT void t_sync(void *terminal)
{
    // Feeding is done when it returns; nothing is put off. Events nobody takes are dropped here.
    face(terminal).terminal.takeEvents();
}

EXPORT void t_resize(void *terminal, int cols, int rows)
{
    face(terminal).terminal.resize(cols, rows);
}

EXPORT void t_close(void *terminal)
{
    delete &face(terminal);
}
