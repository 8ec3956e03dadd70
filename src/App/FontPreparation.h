#pragma once

#include <thread>

/// Reads the system's font configuration on a second processor while the application object is made: that is several
/// milliseconds of reading XML, which the first text would wait for otherwise. Does nothing where Qt has its fonts
/// from elsewhere.
class FontPreparation
{
public:
    /// Begins.
    FontPreparation();
    /// As `wait`.
    ~FontPreparation();
    FontPreparation(const FontPreparation &) = delete;
    FontPreparation &operator=(const FontPreparation &) = delete;

    /// Returns when it is done. To be called before the first text, which would read the same again beside it.
    void wait();

private:
    std::thread m_thread;
};
