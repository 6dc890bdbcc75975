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
constexpr int sizeOffset = 40; // of the samples' size, in the header of a WAV file
constexpr int patience = 60'000;

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
    for (const QString &name : folder.entryList({u"orvane-upload-*"_s}, QDir::Files)) {
        std::error_code error;
        std::filesystem::create_hard_link(folder.filePath(name).toStdString(), m_path.toStdString(), error);
    }
}

double KeptRequest::recordedTime() const
{
    const QByteArray request = content();
    const qsizetype wav = request.indexOf("RIFF");
    return double(qFromLittleEndian<quint32>(request.constData() + wav + sizeOffset)) / bytesPerMillisecond;
}

double KeptRequest::timeOfCurl(const QString &address) const
{
    const QByteArray boundary = content().split('\r').constFirst().mid(2);
    QProcess curl;
    curl.start(u"curl"_s, {u"--silent"_s, u"--fail"_s, u"--noproxy"_s, u"*"_s, u"--output"_s,
                           QProcess::nullDevice(), u"--write-out"_s, u"%{time_total}"_s, u"--header"_s,
                           u"Content-Type: multipart/form-data; boundary="_s + QString::fromLatin1(boundary),
                           u"--data-binary"_s, u'@' + m_path, address});
    if (!curl.waitForFinished(patience) || curl.exitCode() != 0)
        qFatal("curl has failed");
    return curl.readAllStandardOutput().toDouble() * 1000;
}

QByteArray KeptRequest::content() const
{
    QFile file(m_path);
    if (!file.open(QFile::ReadOnly))
        qFatal("the program has sent no request");
    return file.readAll();
}

} // namespace orvane
