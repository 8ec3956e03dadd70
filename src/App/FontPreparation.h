#pragma once

#include <optional>
#include <pthread.h>

/// Reads the system's font configuration on a second processor while the application object is made, which waits for
/// the display server most of its time: that is several milliseconds of XML, which the first text would wait for
/// otherwise. Does nothing where Qt has its fonts from elsewhere.
class FontPreparation
{
public:
    /// Begins, and sets the locale as the application object will: what reads the configuration asks for the locale
    /// and the environment meanwhile, where nothing may move. The one variable that Qt takes away from there,
    /// DESKTOP_STARTUP_ID, is made the last, so that no other moves with it.
    FontPreparation();
    /// As `wait`.
    ~FontPreparation();
    FontPreparation(const FontPreparation &) = delete;
    FontPreparation &operator=(const FontPreparation &) = delete;

    /// Returns when it is done. To be called before the first text, which would read the same again beside it.
    void wait();

private:
    std::optional<pthread_t> m_thread;
};
