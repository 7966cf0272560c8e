#pragma once

#include <QtGlobal>

#include <cstdio>

// Writes a deterministic mixed 10-column CSV (RFC 4180, LF, UTF-8) of about
// `bytes` bytes: ids, integers, decimals, ISO dates, words, names, free text
// (partly quoted, with commas, doubled quotes and line breaks), a category,
// an optional note that is mostly empty, and an amount. The same seed and size
// give the same bytes on every machine.
bool generateMixedCsv(std::FILE* out, qint64 bytes, quint64 seed);
