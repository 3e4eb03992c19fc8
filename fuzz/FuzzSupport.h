#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace ondrel::fuzz {

// What the fuzz targets share: a scratch directory, files written from the input, and a check
// that stops the run so that libFuzzer keeps the input that broke it.

// The input as bytes.
QByteArray bytesOf(const std::uint8_t* data, std::size_t size);

// A directory for the whole run of one target, in memory (/dev/shm) where the system has it;
// created on first use and removed when the process ends normally.
const QString& scratchDirectory();
QString scratchFile(const QString& name);

// Replaces the file's content.
void writeFile(const QString& path, const QByteArray& bytes);

// Aborts with the message when the property does not hold.
void require(bool holds, const char* what);

// Answers every message box with its first button, without showing it.
void answerMessageBoxes();

} // namespace ondrel::fuzz
