#include "App/FontPreparation.h"

#include <dlfcn.h>
#include <utility>

namespace
{

void *readConfiguration(void *)
{
    // Of the library that QtGui has loaded; whoever asks for it later finds the result.
    if (const auto initialise = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "FcInit"))) {
        initialise();
    }
    return nullptr;
}

} // namespace

FontPreparation::FontPreparation()
{
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, &readConfiguration, nullptr) == 0) {
        m_thread = thread;
    }
}

FontPreparation::~FontPreparation()
{
    wait();
}

void FontPreparation::wait()
{
    if (const auto thread = std::exchange(m_thread, std::nullopt)) {
        pthread_join(*thread, nullptr);
    }
}
