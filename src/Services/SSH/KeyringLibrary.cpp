#include "Services/SSH/KeyringLibrary.h"

#include "Helpers/Log.h"
#include "Helpers/ModuleLibrary.h"

using namespace Qt::StringLiterals;

std::unique_ptr<DesktopKeyring> KeyringLibrary::makeKeyring()
{
    const ModuleLibrary::Loaded library = ModuleLibrary::load("libtarnwell_keyring.so"_L1);
    auto *const factory = qobject_cast<KeyringFactory *>(library.object);
    if (!factory) {
        Log::warning(u"The desktop's keyring cannot be reached: "_s + library.error, Log::Category::Auth);
        return nullptr;
    }
    return factory->make();
}
