#include "tools/benchmarks/outside/KeptRequest.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtEndian>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int bytesPerMillisecond = 16 * 2;
constexpr int headerSize = 44;
constexpr int sizeOffset = 40; // of the samples' size, in the header of a WAV file
constexpr int patience = 240'000;

} // namespace

KeptRequest::KeptRequest(const QString &folder, const QString &path) : m_folder(folder), m_path(path) {}

KeptRequest::~KeptRequest()
{
    QFile::remove(m_path);
}

void KeptRequest::look()
{
    if (QFile::exists(m_path))
        return;
    const QDir folder(m_folder);
    // The program deletes its file; under another name it stays.
    for (const QString &name : folder.entryList({u"orvane-*.wav"_s}, QDir::Files)) {
        std::error_code error;
        std::filesystem::create_hard_link(folder.filePath(name).toStdString(), m_path.toStdString(), error);
    }
}

double KeptRequest::recordedTime() const
{
    QFile file(m_path);
    if (!file.open(QFile::ReadOnly))
        qFatal("the program has sent no request");
    return double(qFromLittleEndian<quint32>(file.read(headerSize).constData() + sizeOffset)) /
           bytesPerMillisecond;
}

double timeOfCurl(const QString &recording, const QString &address)
{
    QStringList arguments{u"--silent"_s, u"--fail"_s,    u"--noproxy"_s,   u"*"_s,
                          u"--output"_s, u"/dev/null"_s, u"--write-out"_s, u"%{time_total}"_s};
    for (const QString &field : {u"response_format=verbose_json"_s, u"language=auto"_s, u"temperature=0.0"_s,
                                 u"no_language_probabilities=true"_s, u"split_on_word=true"_s,
                                 u"suppress_nst=true"_s, u"file=@"_s + recording})
        arguments += {u"--form"_s, field};
    QProcess curl;
    curl.start(u"curl"_s, arguments + QStringList(address));
    if (!curl.waitForFinished(patience) || curl.exitCode() != 0)
        qFatal("curl has failed");
    return curl.readAllStandardOutput().toDouble() * 1000;
}

} // namespace orvane
