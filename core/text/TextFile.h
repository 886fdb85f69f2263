// Loading, classifying and saving text files for the viewer and the editor, without ever
// corrupting one: only known encodings, the file's own line endings, no save over another's change.
#pragma once

#include "text/FileStamp.h"
#include "text/LineEnding.h"
#include "text/LoadedText.h"
#include "text/TextClassification.h"
#include "text/TextEncodingKind.h"
#include "text/TextFileError.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orbisk::TextFile {

/// The editor's limit: 32 MiB.
inline constexpr std::int64_t editorSizeLimit = 33'554'432;
/// How many leading bytes the binary test looks at.
inline constexpr std::size_t binaryTestLength = 65'536;

/// Reads a text file whole, following links. A file over sizeLimit is refused before a byte of it
/// is read; folders, FIFOs, devices and sockets are refused before they are opened, so opening
/// never blocks. Binary files and unknown encodings are refused, never converted. The text comes
/// back with line feeds only, with the encoding, the dominant line ending and the stamp needed to
/// write it back. Any thread.
[[nodiscard]] std::expected<LoadedText, TextFileError> load(const std::filesystem::path& path,
                                                            std::int64_t sizeLimit = editorSizeLimit);

/// Writes text (line feeds only) to path in the given encoding and line ending, and returns the
/// stamp of the saved file. With an expected stamp, refuses (writing nothing) when the file is
/// gone (missingOnDisk) or is no longer that version (modifiedOnDisk). A link is saved through to
/// its target and stays a link; a file with several hard links is rewritten in place so that every
/// name keeps seeing it; otherwise the bytes go to a temporary file beside the target, are flushed,
/// get the target's mode, owner, extended attributes and ACLs, and replace it by a rename. On any
/// failure the original is left byte-identical and no temporary file remains. Any thread.
[[nodiscard]] std::expected<FileStamp, TextFileError> save(std::string_view text, const std::filesystem::path& path,
                                                           TextEncodingKind encoding, LineEnding lineEnding,
                                                           const std::optional<FileStamp>& expected = std::nullopt);

/// What the bytes of a whole file are: byte-order marks first, then the binary test, then UTF-8.
/// No other encoding is ever guessed.
[[nodiscard]] TextClassification classify(std::string_view data);

/// The text of a file's bytes in the given encoding, its byte-order mark dropped; nothing when the
/// bytes are not valid in it. Line endings are left as they are.
[[nodiscard]] std::optional<std::string> decode(std::string_view data, TextEncodingKind kind);

/// The bytes of text (line feeds only) for a file: each LF becomes lineEnding, then the text is
/// converted to the encoding with its byte-order mark first. Nothing when the text is not valid
/// UTF-8 (a character the encoding cannot hold).
[[nodiscard]] std::optional<std::string> encode(std::string_view text, TextEncodingKind encoding,
                                                LineEnding lineEnding);

struct LineEndingSummary {
    LineEnding dominant = LineEnding::lf;
    bool mixed = false;
    bool operator==(const LineEndingSummary&) const = default;
};

/// The dominant line ending of text and whether it holds more than one style.
[[nodiscard]] LineEndingSummary lineEndings(std::string_view text);

/// Text with every CR LF pair and then every lone CR made a single LF.
[[nodiscard]] std::string normalizeLineEndings(std::string_view text);

/// Whether data looks binary: a zero byte, or more than 5 % control bytes other than tab, line
/// feed, form feed, carriage return and escape, among its first 65,536 bytes.
[[nodiscard]] bool looksBinary(std::string_view data);

/// The viewer's hex dump: per line of 16 bytes, the offset ("%08x", more digits past 4 GiB), two
/// spaces, the bytes as "%02x" in two groups of eight, and the printable ASCII between bars.
/// firstOffset is the file offset of data's first byte.
[[nodiscard]] std::string hexDump(std::string_view data, std::uint64_t firstOffset = 0);

/// Bytes per line of hexDump.
inline constexpr std::size_t hexBytesPerLine = 16;

} // namespace orbisk::TextFile
