#include "ui/presentation/Check.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "diagnostics/SystemCheck.h"

using namespace Qt::StringLiterals;

namespace orvane {

using State = CheckResult::State;

Check::Check(SystemCheck &check, QObject *parent)
    : RowModel({"checkId", "name", "state", "text"}, parent),
      m_check(check)
{
    connect(&check, &SystemCheck::resultsChanged, this, &Check::show);
    connect(&check, &SystemCheck::runningChanged, this, &Check::show);
    connect(&check.microphone(), &MicrophoneCheck::levelChanged, this, &Check::levelChanged);
    show();
}

Check::~Check()
{
    m_scope.end();
}

bool Check::isRunning() const
{
    return m_check.isRunning();
}

bool Check::isListening() const
{
    return m_check.microphone().isListening();
}

QList<float> Check::waveform() const
{
    return m_check.microphone().waveform();
}

QString Check::summary() const
{
    if (isRunning())
        return Localization::text(u"Проверяю…");
    if (m_isOutdated)
        return {};
    QStringList faults;
    for (qsizetype i = 0; i < m_check.count(); ++i) {
        const std::optional<CheckResult> result = this->result(i);
        if (result && result->state == State::Bad)
            faults.append(m_check.check(i).name.toString());
    }
    return faults.isEmpty() ? Localization::text(u"Всё работает.")
                            : Localization::text(u"Не в порядке: %1.").arg(faults.join(u", "_s).toLower());
}

void Check::run()
{
    if (!isRunning())
        spawn(check());
}

QCoro::Task<> Check::check()
{
    do {
        m_isOutdated = false;
        co_await m_scope(m_check.run(m_scope.stop()));
    } while (m_isOutdated);
}

void Check::relabel()
{
    m_isOutdated = true;
    show();
}

std::optional<CheckResult> Check::result(qsizetype index) const
{
    return m_isOutdated ? std::nullopt : m_check.result(index);
}

void Check::show()
{
    QList<QVariantMap> rows;
    for (qsizetype i = 0; i < m_check.count(); ++i) {
        const SystemCheck::Check &check = m_check.check(i);
        const std::optional<CheckResult> result = this->result(i);
        rows.append({{u"checkId"_s, check.id},
                     {u"name"_s, check.name.toString()},
                     {u"state"_s, result ? nameOf(result->state) : u"waiting"_s},
                     {u"text"_s, result ? result->text : QString()}});
    }
    setRows(rows);
    Q_EMIT changed();
}

} // namespace orvane
