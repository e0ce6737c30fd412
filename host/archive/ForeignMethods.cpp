#include "host/archive/ForeignMethods.h"

#include <dlfcn.h>

#include <algorithm>
#include <memory>

#include "host/archive/ForeignModule.h"
#include "host/archive/PackedData.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::size_t kBufferSize = 1 << 16;
constexpr std::uint16_t kDeflate64 = 9;
constexpr std::uint16_t kBzip2 = 12;
constexpr std::uint16_t kLzma = 14;
constexpr std::uint16_t kXz = 95;
constexpr std::uint16_t kPpmd = 98;

constexpr std::size_t kLzmaDictionarySize = 5;          // APPNOTE 5.8.8: in the data, 32 bits
constexpr std::uint64_t kMostLzmaExpansion = 8192;      // of any data; the coder's cheapest match makes 7,100 of one
constexpr std::uint64_t kSmallestDictionary = 1 << 12;  // that every decoder has

// Loaded at the first call and kept to the end. Null where the installation lacks it.
const ForeignModule* Module() {
    static const ForeignModule* const module = [] {
        void* const library = dlopen(BesideProgram(kForeignModuleFile).c_str(), RTLD_NOW | RTLD_LOCAL);
        return static_cast<const ForeignModule*>(library == nullptr ? nullptr : dlsym(library, kForeignModuleSymbol));
    }();
    return module;
}

// Ends a reader of the module.
struct CloseReader {
    void operator()(void* reader) const { Module()->close(reader); }
};

// Gives the module one member as an archive of its own, so that it only unpacks and finds nothing by itself: the
// archives that come here are those whose records it may read in another way.
class ForeignContents {
public:
    ForeignContents(File& file, const ArchiveEntry& entry, const LocalRecord& local)
        : file_(file),
          offset_(local.dataOffset),
          left_(local.dataSize),
          size_(entry.uncompressedSize),
          crc32_(entry.crc32),
          mostDictionary_(entry.method == kLzma ? std::min(size_, kMostLzmaExpansion * left_) : kMaxOffset),
          header_(kLocalHeaderSize + 1, '\0') {
        StoreU32(&header_[0], kLocalHeaderSignature);
        StoreU16(&header_[kLocalVersionNeeded], entry.versionNeeded);
        StoreU16(&header_[kLocalFlags], entry.flags & kMethodFlags);
        StoreU16(&header_[kLocalMethod], entry.method);
        StoreU32(&header_[kLocalCrc32], entry.crc32);
        StoreU32(&header_[kLocalCompressedSize], static_cast<std::uint32_t>(left_));
        StoreU32(&header_[kLocalUncompressedSize], static_cast<std::uint32_t>(size_));
        StoreU16(&header_[kLocalNameLength], 1);
        header_[kLocalHeaderSize] = 'x';
    }

    Result<std::size_t> Read(void* buffer, std::size_t size) {
        const ForeignModule* const module = Module();
        if (module == nullptr) return Failure{FailureKind::Unsupported, "what unpacks it is not installed"};
        if (!isOpen_) reader_.reset(module->open(&ForeignContents::Give, this));
        isOpen_ = true;
        const std::ptrdiff_t count = reader_ == nullptr ? -1 : module->read(reader_.get(), buffer, size);
        if (count < 0) return Damaged();
        sums_.Add(buffer, static_cast<std::size_t>(count));
        const bool ended = count == 0;
        if (sums_.Size() > size_ || (ended && (sums_.Size() != size_ || sums_.Crc32() != crc32_))) return Damaged();
        return static_cast<std::size_t>(count);
    }

private:
    static Failure Damaged() { return {FailureKind::Damaged, "it is damaged, and does not unpack"}; }

    static std::ptrdiff_t Give(void* self, const void** bytes) {
        return static_cast<ForeignContents*>(self)->GiveNext(bytes);
    }

    // The header, then the packed bytes, then nothing.
    std::ptrdiff_t GiveNext(const void** bytes) {
        piece_.swap(header_);
        header_.clear();
        if (piece_.empty()) {
            piece_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left_, kBufferSize)));
            if (!ReadAt(file_, offset_, piece_.size(), piece_.data())) return -1;
            offset_ += piece_.size();
            left_ -= piece_.size();
            CutDictionary();
        }
        *bytes = piece_.data();
        return static_cast<std::ptrdiff_t>(piece_.size());
    }

    // The library takes the memory of the dictionary that a member claims, up to 4 GiB, though none is used beyond the
    // size of the contents.
    void CutDictionary() {
        if (mostDictionary_ < kMaxOffset && piece_.size() >= kLzmaDictionarySize + 4) {
            char* const field = &piece_[kLzmaDictionarySize];
            const std::uint64_t size = std::max(mostDictionary_, kSmallestDictionary);
            StoreU32(field, static_cast<std::uint32_t>(std::min<std::uint64_t>(LoadU32(field), size)));
        }
        mostDictionary_ = kMaxOffset;  // the field stands in the first piece
    }

    File& file_;
    std::uint64_t offset_;
    std::uint64_t left_;
    const std::uint64_t size_;
    const std::uint32_t crc32_;
    std::uint64_t mostDictionary_;
    std::string header_;  // empty when it was given
    std::string piece_;   // what the module is reading
    std::unique_ptr<void, CloseReader> reader_;
    bool isOpen_ = false;
    ContentsSums sums_;
};

}  // namespace

bool IsForeignMethod(std::uint16_t method) {
    return method == kBzip2 || method == kLzma || method == kXz || method == kPpmd;
}

void LoadForeignMethods() {
    Module();
}

std::string NameOfMethod(std::uint16_t method) {
    switch (method) {
        case kDeflate64:
            return "Deflate64";
        case kBzip2:
            return "bzip2";
        case kLzma:
            return "LZMA";
        case kXz:
            return "xz";
        case kPpmd:
            return "PPMd";
        default:
            return "method " + std::to_string(method);
    }
}

ContentsReader UnpackMember(const ArchiveRecords& archive, const ArchiveEntry& entry, const LocalRecord& local) {
    const auto contents = std::make_shared<ForeignContents>(archive.Archive(), entry, local);
    return [contents](void* buffer, std::size_t size) { return contents->Read(buffer, size); };
}

}  // namespace ZEMA
