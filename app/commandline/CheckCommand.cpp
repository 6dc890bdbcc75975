#include "app/commandline/CheckCommand.h"

#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/services/AppServices.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using State = CheckResult::State;

QChar markOf(State state)
{
    switch (state) {
    case State::Unknown:
        return u'–';
    case State::Good:
        return u'✓';
    case State::Bad:
        return u'✗';
    }
    Q_UNREACHABLE();
}

} // namespace

CheckCommand::CheckCommand(AppServices &services, Options options)
    : m_check({.settings = services.settings(),
               .models = services.models(),
               .correctionModels = services.correctionModels(),
               .engine = services.whisperEngine(),
               .corrector = services.corrector(),
               .turns = services.turns(),
               .folders = services.folders()}),
      m_options(options)
{}

QCoro::Task<int> CheckCommand::run()
{
    co_await m_check.run(m_stop.get_token());
    Output::write(m_options.asJson ? json() : lines().toUtf8());
    co_return m_check.hasFault() ? ExitStatus::failure : ExitStatus::success;
}

QString CheckCommand::lines() const
{
    QString lines;
    for (qsizetype i = 0; i < m_check.count(); ++i) {
        const CheckResult result = m_check.result(i).value_or(CheckResult());
        lines +=
            u"%1 %2: %3\n"_s.arg(markOf(result.state)).arg(m_check.check(i).name.toString(), result.text);
    }
    return lines;
}

QByteArray CheckCommand::json() const
{
    QJsonArray checks;
    for (qsizetype i = 0; i < m_check.count(); ++i) {
        const CheckResult result = m_check.result(i).value_or(CheckResult());
        checks.append(QJsonObject{{u"id"_s, m_check.check(i).id},
                                  {u"name"_s, m_check.check(i).name.toString()},
                                  {u"state"_s, nameOf(result.state)},
                                  {u"text"_s, result.text}});
    }
    return QJsonDocument(QJsonObject{{u"checks"_s, checks}, {u"good"_s, !m_check.hasFault()}}).toJson();
}

} // namespace orvane
