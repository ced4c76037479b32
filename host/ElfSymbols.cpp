#include "host/ElfSymbols.h"

#include <elf.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

namespace orvane {
namespace {

/// A file in memory; what lies outside of it is not there, whatever its tables say.
class ElfImage {
 public:
  explicit ElfImage(std::string bytes) : bytes_(std::move(bytes)) {}

  template <typename Record>
  std::optional<Record> at(std::uint64_t offset) const {
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record)) return std::nullopt;
    Record record;
    std::memcpy(&record, bytes_.data() + offset, sizeof(Record));
    return record;
  }

  /// The text that begins at an offset and ends with a zero.
  std::string_view textAt(std::uint64_t offset) const {
    if (offset >= bytes_.size()) return {};
    const char* const begin = bytes_.data() + offset;
    return {begin, strnlen(begin, bytes_.size() - offset)};
  }

 private:
  const std::string bytes_;
};

bool isDefinedFunction(const Elf64_Sym& symbol) {
  return symbol.st_shndx != SHN_UNDEF && ELF64_ST_TYPE(symbol.st_info) == STT_FUNC;
}

/// Looks through one table of symbols. Overflowing sums lead outside of the file or back into it,
/// and either is harmless.
bool tableOffers(const ElfImage& image, const Elf64_Shdr& table, const Elf64_Shdr& texts,
                 const std::string& name) {
  for (std::uint64_t offset = 0; offset + sizeof(Elf64_Sym) <= table.sh_size;
       offset += sizeof(Elf64_Sym)) {
    const auto symbol = image.at<Elf64_Sym>(table.sh_offset + offset);
    if (!symbol) return false;
    if (isDefinedFunction(*symbol) && image.textAt(texts.sh_offset + symbol->st_name) == name)
      return true;
  }
  return false;
}

}  // namespace

bool offersFunction(const std::string& path, const std::string& name) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();  // What cannot be read leaves it empty.
  const ElfImage image(bytes.str());
  const auto header = image.at<Elf64_Ehdr>(0);
  if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
      header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_ident[EI_DATA] != ELFDATA2LSB ||
      header->e_type != ET_DYN || header->e_shentsize != sizeof(Elf64_Shdr))
    return false;
  const auto section = [&image, &header](std::uint64_t index) {
    return image.at<Elf64_Shdr>(header->e_shoff + index * sizeof(Elf64_Shdr));
  };
  for (std::uint64_t index = 0; index < header->e_shnum; ++index) {
    const auto table = section(index);
    if (!table) return false;
    if (table->sh_type != SHT_DYNSYM) continue;
    const auto texts = section(table->sh_link);
    return texts && tableOffers(image, *table, *texts, name);
  }
  return false;
}

}  // namespace orvane
