#pragma once

#include "Views/FakeTransport.h"
#include "Views/Shell/AddEditServerViewModel.h"

#include <QCoroTask>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

/// A form of a server on a transport that a script answers for.
class AddEditServerRig
{
protected:
    using Activity = AddEditServerViewModel::Activity;
    using Field = AddEditServerViewModel::Field;

    static constexpr QLatin1StringView kCouldNotConnect{
        "Could not connect to server. Please verify your connection settings (host, port, username, and "
        "authentication credentials)."};

    void setUp()
    {
        m_key = m_directory.filePath(QStringLiteral("id_test"));
        QFile file(m_key);
        QVERIFY(file.open(QIODevice::WriteOnly));
        m_transport = std::make_unique<FakeTransport>();
    }

    void tearDown()
    {
        m_saved.reset();
        m_model.reset();
        m_transport.reset();
    }

    // Whether one is stored, and which.
    QString stored(const QString &account)
    {
        return QCoro::waitFor(m_transport->keychain.getPassword(account)).value_or(QStringLiteral("-"));
    }

    void store(const QString &account, const QString &secret)
    {
        QVERIFY(QCoro::waitFor(m_transport->keychain.savePassword(account, secret)));
    }

    AddEditServerViewModel &open(const std::optional<Server> &server = std::nullopt)
    {
        m_model = std::make_unique<AddEditServerViewModel>(
            AddEditServerViewModel::Services{m_transport->store, m_transport->manager}, server);
        m_saved = std::make_unique<QSignalSpy>(m_model.get(), &AddEditServerViewModel::saved);
        return *m_model;
    }

    AddEditServerViewModel &openFilled(AuthMethod method = AuthMethod::Password)
    {
        AddEditServerViewModel &model = open();
        model.setName(QStringLiteral("web"));
        model.setHost(QStringLiteral("h"));
        model.setUsername(QStringLiteral("u"));
        model.setAuthMethod(method);
        model.setPrivateKeyPath(m_key);
        return model;
    }

    Server addServer(AuthMethod method)
    {
        Server server = m_transport->add(QStringLiteral("web"), method);
        server.host = QStringLiteral("h");
        server.username = QStringLiteral("u");
        if (method == AuthMethod::PublicKey) {
            server.privateKeyPath = m_key;
        }
        m_transport->store.updateServer(server);
        return server;
    }

    void save(AddEditServerViewModel &model)
    {
        model.validateAndSaveServer();
        QTRY_COMPARE(model.activity(), Activity::None);
    }

    QTemporaryDir m_directory;
    QString m_key;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<AddEditServerViewModel> m_model;
    std::unique_ptr<QSignalSpy> m_saved;
};
