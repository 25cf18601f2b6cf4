#include "imaging/io/mapped_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace skarnel::io {

MappedFile::MappedFile(int descriptor) : descriptor_(descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return;
    if (::lseek(descriptor, 0, SEEK_CUR) != 0) return;
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > kMaxFileBytes) return;  // reading says why
    void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (mapped == MAP_FAILED) return;
    mapped_ = static_cast<std::uint8_t*>(mapped);
    mappedBytes_ = size;
}

MappedFile::~MappedFile() {
    if (mapped_ != nullptr) ::munmap(mapped_, mappedBytes_);
}

Result<ByteView> MappedFile::read() {
    if (mapped_ != nullptr) return ByteView(mapped_, mappedBytes_);
    auto bytes = readAll(descriptor_);
    if (!bytes) return bytes.error();
    bytes_ = *std::move(bytes);
    return ByteView(bytes_);
}

}  // namespace skarnel::io
