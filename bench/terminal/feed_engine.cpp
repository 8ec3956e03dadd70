// feed-engine FILE COLUMNS ROWS SCROLLBACK: seconds the engine takes for the file, through the plain C face.

#include "feed.h"
#include "terminal_c.h"

int main(int argc, char **argv)
{
    const Job job = Job::parse(argc, argv);
    void *terminal = t_open(job.columns, job.rows, job.scrollback);
    job.run([&](const char *bytes, size_t size) { t_feed(terminal, bytes, size); }, [&] { t_sync(terminal); });
    t_close(terminal);
    return 0;
}
