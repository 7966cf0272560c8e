#pragma once

#include <QtGlobal>

#include <cstdio>

// Writes a deterministic mixed 10-column CSV (RFC 4180, LF, UTF-8) of about
// `bytes` bytes: ids, integers, decimals, ISO dates, words, names, free text
// (partly quoted, with commas, doubled quotes and line breaks), a category,
// an optional note that is mostly empty, and an amount. The same seed and size
// give the same bytes on every machine.
bool generateMixedCsv(std::FILE* out, qint64 bytes, quint64 seed);

// The shapes: the mixed file above, or a narrow numeric one of 20 columns of
// short integers and two-decimal numbers with some cells missing.
enum class CsvShape { Mixed, Numeric };
// Minimal quoting (only where needed), every field quoted, or every field but
// the numbers, as the writers of other tools do it.
enum class CsvQuoting { Minimal, All, NonNumeric };
bool generateCsv(std::FILE* out, qint64 bytes, quint64 seed, CsvShape shape, CsvQuoting quoting,
                 bool crlf);
