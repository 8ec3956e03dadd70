#include "rig/ScriptedServer.h"

#include "Helpers/OneShot.h"

#include <algorithm>

class ScriptedServer::Connection : public SSHConnection
{
public:
    explicit Connection(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    QCoro::Task<CommandResult> executeCommand(ShellLine command, std::optional<double> timeout) override
    {
        Q_UNUSED(timeout)
        const std::shared_ptr<State> state = m_state;
        state->lines.append(command.text);
        if (state->isHolding) {
            OneShot<bool> released(false);
            state->waiting.emplace_back([done = released.completer()] { done.complete(true); });
            if (!co_await released.wait()) {
                co_return CommandResult();
            }
        }
        co_return state->answer ? state->answer(command.text) : said({});
    }

    void cleanup() override {}

private:
    std::shared_ptr<State> m_state;
};

ScriptedServer::ScriptedServer()
    : manager({m_transport.launcher, m_transport.keychain, m_transport.settings, m_transport.prompt},
              m_transport.pool,
              [state = m_state](const Server &, const std::optional<QString> &, const std::optional<QString> &)
                  -> std::shared_ptr<SSHConnection> { return std::make_shared<Connection>(state); })
{
}

// Logins go through a client of their own: whoever waits for one is resumed while the manager still stands.
ScriptedServer::~ScriptedServer()
{
    m_transport.quit();
}

Server ScriptedServer::server()
{
    Server server;
    server.name = QStringLiteral("scripted");
    server.host = QStringLiteral("scripted.example");
    server.username = QStringLiteral("ada");
    server.authMethod = AuthMethod::SshAgent;
    return server;
}

void ScriptedServer::release(bool newestFirst)
{
    m_state->isHolding = false;
    answerWaiting(newestFirst);
}

void ScriptedServer::step()
{
    answerWaiting(false);
}

void ScriptedServer::answerWaiting(bool newestFirst)
{
    auto waiting = std::exchange(m_state->waiting, {});
    if (newestFirst) {
        std::ranges::reverse(waiting);
    }
    for (const std::function<void()> &go : waiting) {
        go();
    }
}
