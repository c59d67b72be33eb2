// File names exactly as the file system gives them, and their escaped form for text output.
#pragma once

#include <QString>

#include <string>

// On Linux a file name is any run of bytes; Qt turns names into text with the locale's codec (UTF-8), which
// loses the bytes that are not UTF-8, and then lists no such file and opens none. This makes the locale
// codec a UTF-8 codec that keeps each such byte as one unpaired surrogate U+DC80..U+DCFF and turns it back
// into the same byte, so every name survives the trip through QString (as Python's "surrogateescape").
// Call once at start, before the application object reads the command line; GUI thread.
void keepFileNamesAsGiven();

// A name or path for text meant to be read: the bytes that are not UTF-8 as \xNN, control characters as
// \n, \t, \r or \xNN, and the backslash as \\; every other character as it is.
//
//   printableFileName(QFile::decodeName("a\xff\nb.mp4")) == "a\\xFF\\nb.mp4"
QString printableFileName(const QString& name);
// The same as UTF-8, for the log.
std::string printableFileNameUtf8(const QString& name);
