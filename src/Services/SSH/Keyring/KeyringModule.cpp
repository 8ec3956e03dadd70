// What the program finds in the library of the keyring.

#include "Services/SSH/Keyring/SecretServiceStore.h"

#include <QObject>

class KeyringModule : public QObject, public KeyringFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "Tarnwell.KeyringFactory/1")
    Q_INTERFACES(KeyringFactory)

public:
    std::unique_ptr<DesktopKeyring> make() override { return std::make_unique<SecretServiceStore>(); }
};

#include "KeyringModule.moc"
