// Puts the pages that a rollback journal holds back into a copy of the database. The format is the
// one that SQLite documents for rollback journals; its numbers are big-endian.

#include "administration/history/HotJournal.h"

#include <cstdint>
#include <string_view>

#include <host/AtomicFile.h>

#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

constexpr std::string_view kMagic("\xD9\xD5\x05\xF9\x20\xA1\x63\xD7", 8);
constexpr std::size_t kHeaderSize = 28;

std::uint32_t NumberAt(std::string_view bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return number;
}

/// What begins a part of the journal. A large change has several parts.
struct Header {
    explicit Header(std::string_view bytes)
        : records(NumberAt(bytes, 8)), nonce(NumberAt(bytes, 12)), pages(NumberAt(bytes, 16)),
          sectorSize(NumberAt(bytes, 20)), pageSize(NumberAt(bytes, 24)) {}

    std::uint32_t records, nonce, pages, sectorSize, pageSize;
};

std::uint32_t ChecksumOf(std::string_view page, std::uint32_t nonce) {
    constexpr std::size_t kStep = 200;
    for (std::size_t i = page.size() - kStep; i > 0 && i < page.size(); i -= kStep)
        nonce += static_cast<unsigned char>(page[i]);
    return nonce;
}

/// Puts the pages of one part back. Returns false where a page was not written whole: the database
/// had not been touched then.
bool PutBack(std::string_view records, Header const& header, std::string& database) {
    std::size_t const recordSize = header.pageSize + std::size_t{8};
    for (std::uint32_t i = 0; i < header.records; ++i) {
        if (records.size() < recordSize)
            return false;
        std::uint32_t const number = NumberAt(records, 0);
        std::string_view const page = records.substr(4, header.pageSize);
        if (ChecksumOf(page, header.nonce) != NumberAt(records, 4 + page.size()))
            return false;
        std::size_t const begin = (number - std::size_t{1}) * page.size();
        if (number > 0 && begin < database.size())
            database.replace(begin, page.size(), page);
        records.remove_prefix(recordSize);
    }
    return true;
}

bool IsSensible(Header const& header) {
    constexpr std::uint32_t kLargest = 65536;
    return header.pageSize >= 512 && header.pageSize <= kLargest &&
           header.sectorSize >= kHeaderSize && header.sectorSize <= kLargest;
}

void Undo(std::string_view journal, std::string& database) {
    for (bool isFirst = true;; isFirst = false) {
        if (journal.size() < kHeaderSize || journal.substr(0, kMagic.size()) != kMagic)
            return;
        Header const header(journal);
        if (!IsSensible(header) || journal.size() < header.sectorSize)
            return;
        if (isFirst)
            database.resize(std::size_t{header.pages} * header.pageSize);
        if (!PutBack(journal.substr(header.sectorSize), header, database))
            return;
        std::size_t const size =
            header.sectorSize + header.records * (header.pageSize + std::size_t{8});
        std::size_t const next = (size + header.sectorSize - 1) / header.sectorSize;
        if (next * header.sectorSize >= journal.size())
            return;
        journal.remove_prefix(next * header.sectorSize);
    }
}

} // namespace

std::string ReadBeforeJournal(std::string const& file) {
    constexpr int kMostReads = 20;
    for (int reads = 0; reads < kMostReads; ++reads) {
        HostPlatform::FileText database = HostPlatform::ReadFile(file);
        std::string const journal = HostPlatform::ReadFile(file + "-journal").text;
        // Somebody who may write could have put it right between the two.
        if (HostPlatform::ReadFile(file).stamp != database.stamp)
            continue;
        Undo(journal, database.text);
        return std::move(database.text);
    }
    throw Error(Error::Kind::Unreadable, file + ": is written to all the time while it is read");
}

} // namespace CallRecordingUtils
