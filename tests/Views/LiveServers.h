#pragma once

#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Models/ServerStore.h"
#include "Services/Commands/ServerListEffects.h"
#include "Views/Dashboard/SecretForm.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Theme/Theme.h"

#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <memory>

/// For tests that drive the dashboard, or the whole window, on a real sshd: what the program has around them. The
/// test's init() calls begin(), its cleanup() end().
class LiveServers
{
protected:
    static constexpr int kPatience = 20'000; // ms, for what a server is to answer

    bool up(RigSshd::Accounts accounts = RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present)
    {
        m_theme.install();
        return m_sshd.up(accounts);
    }

    void begin()
    {
        m_transport = std::make_unique<TestTransport>();
        m_effects = std::make_unique<ServerListEffects>(m_transport->manager, nullptr);
        m_store = std::make_unique<ServerStore>(m_transport->defaults, m_transport->clock, m_effects.get());
    }

    void openWindow()
    {
        m_window = std::make_unique<ContentView>(
            m_theme, ContentView::Services{*m_store, m_transport->manager, m_transport->clock});
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void end()
    {
        m_window.reset();
        m_transport->quit(); // whoever waits is resumed while the store still stands
        m_store.reset();
        m_effects.reset();
        m_transport.reset();
    }

    Server add(const QString &name, AuthMethod method = AuthMethod::PublicKey, const QString &account = {})
    {
        Server server = TestTransport::server(m_sshd, method, account);
        server.name = name;
        m_store->addServer(server);
        return server;
    }

    void clickServer(const Server &server)
    {
        QListView &list = m_window->serverList().list();
        const QRect row = list.visualRect(m_window->serverList().model().indexOf(server.id));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row.center());
    }

    // What a failed login asks for is typed, and sent off by Return.
    static void type(const SecretForm *form, const QString &secret)
    {
        QVERIFY(form);
        form->field().insert(secret); // key events of QtTest are ASCII only
        QTest::keyClick(&form->field(), Qt::Key_Return);
    }

    RigSshd m_sshd;
    Theme m_theme;
    std::unique_ptr<TestTransport> m_transport;
    std::unique_ptr<ServerListEffects> m_effects;
    std::unique_ptr<ServerStore> m_store;
    std::unique_ptr<ContentView> m_window;
};
