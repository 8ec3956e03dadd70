#pragma once

#include "rig/TestTransport.h"

#include "Services/Commands/CommandSSHManager.h"

#include <functional>
#include <memory>

/// A session manager whose servers are played by the test: it sees each line, and says what comes back and when.
class ScriptedServer
{
public:
    using Answer = std::function<CommandResult(const QString &line)>;

    ScriptedServer();
    ~ScriptedServer();

    /// A record that needs no secret.
    static Server server();

    static CommandResult said(const QByteArray &output, qint32 exitCode = 0) { return {output, {}, exitCode, {}}; }

    /// What a line is answered with; at first nothing and exit code 0.
    void setAnswer(Answer answer) { m_state->answer = std::move(answer); }

    /// From now on lines wait for release().
    void hold() { m_state->isHolding = true; }

    /// Answers the lines that wait, the newest first where `newestFirst`, and holds no more.
    void release(bool newestFirst = false);

    /// Answers the lines that wait; those that follow from it wait again.
    void step();

    /// The lines so far, in the order in which they were sent.
    const QStringList &lines() const { return m_state->lines; }

    qsizetype waiting() const { return static_cast<qsizetype>(m_state->waiting.size()); }

private:
    struct State {
        Answer answer;
        bool isHolding = false;
        QStringList lines;
        std::vector<std::function<void()>> waiting;
    };

    class Connection;

    void answerWaiting(bool newestFirst);

    std::shared_ptr<State> m_state = std::make_shared<State>();
    TestTransport m_transport;

public:
    CommandSSHManager manager;
};
