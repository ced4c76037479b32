// Modules are listed without loading them: what the files say is believed only as far as it goes.

#include "host/ElfSymbols.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "tests/host/Program.h"

namespace orvane {
namespace {

constexpr char kName[] = "createStrategy";

TEST(ElfSymbols, shouldFindAFunctionThatALibraryOffers) {
  EXPECT_TRUE(offersFunction(test::testModule("finishing_strategy"), kName));
}

TEST(ElfSymbols, shouldNotFindOneThatALibraryDoesNotOffer) {
  EXPECT_FALSE(offersFunction(test::testModule("no_factory"), kName));
  EXPECT_FALSE(offersFunction(test::testModule("finishing_strategy"), "createStrateg"));
}

TEST(ElfSymbols, shouldFindNothingInWhatIsNoLibrary) {
  const test::TempFolder folder;
  EXPECT_FALSE(offersFunction(folder / "none.so", kName));
  EXPECT_FALSE(offersFunction(folder / "", kName));
  EXPECT_FALSE(offersFunction(folder.write("empty.so", ""), kName));
  EXPECT_FALSE(offersFunction(folder.write("text.so", "createStrategy\n"), kName));
  EXPECT_FALSE(offersFunction(ORVANE_TEST_PROGRAM, kName));
}

TEST(ElfSymbols, shouldSurviveALibraryThatWasCutOff) {
  const test::TempFolder folder;
  const std::string whole = test::readFile(test::testModule("finishing_strategy"));
  ASSERT_GT(whole.size(), 1000U);
  // The table of sections stands at the end, so without it there is nothing to find.
  for (const std::size_t size : {1UL, 16UL, 63UL, 64UL, 65UL, whole.size() / 2})
    EXPECT_FALSE(offersFunction(folder.write("cut.so", whole.substr(0, size)), kName)) << size;
}

TEST(ElfSymbols, shouldSurviveTablesThatLeadOutOfTheFile) {
  const test::TempFolder folder;
  const std::string whole = test::readFile(test::testModule("finishing_strategy"));
  Elf64_Ehdr header;
  ASSERT_GE(whole.size(), sizeof(header));
  std::memcpy(&header, whole.data(), sizeof(header));
  for (std::size_t section = 0; section < header.e_shnum; ++section) {
    for (const std::size_t field :
         {offsetof(Elf64_Shdr, sh_offset), offsetof(Elf64_Shdr, sh_size)}) {
      std::string bent = whole;
      const std::size_t at = header.e_shoff + section * sizeof(Elf64_Shdr) + field;
      ASSERT_LE(at + 8, bent.size());
      bent.replace(at, 8, 8, '\xff');
      // It may still be found where the bent table is another one. It must only end.
      offersFunction(folder.write("bent.so", bent), kName);
    }
  }
}

}  // namespace
}  // namespace orvane
