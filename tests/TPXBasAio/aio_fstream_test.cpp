// Tests of the file streams: open rules, UTF-8 names, 64-bit positions, descriptors.
#include "aio_fstream.h"

#include "aio_TestSupport.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace {

const int kFail = aio_ios::failbit;

// Switches LC_CTYPE for the scope.
class ScopedCType {
 public:
  explicit ScopedCType(const char* name) : m_old(std::setlocale(LC_CTYPE, nullptr)) {
    m_ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCType() { std::setlocale(LC_CTYPE, m_old.c_str()); }
  bool ok() const { return m_ok; }

 private:
  std::string m_old;
  bool m_ok;
};

// A directory nothing can be created in, whoever runs the test.
const char* kUnwritableDir = "/proc";

TEST(aio_fstreamOpen, ReadingExistingAndMissingFiles) {
  aio_test::TempDir dir;
  aio_test::WriteFile(dir / "in.txt", "first\nsecond\n");
  const int fds = aio_test::OpenFdCount();
  {
    aio_ifstream in;
    in.open((dir / "in.txt").c_str());
    char line[16];
    in.getline(line, sizeof line);
    EXPECT_STREQ("first", line);
    EXPECT_TRUE(in.owned());
    EXPECT_EQ(0, in.rdstate());

    aio_ifstream missing;
    missing.clear(aio_ios::eofbit | aio_ios::badbit);
    missing.open((dir / "absent.txt").c_str());  // no exception
    EXPECT_EQ(kFail, missing.rdstate());         // assigned, not or'ed in
    EXPECT_EQ(nullptr, missing.fptr());

    aio_ifstreamCae cae;
    cae.open((dir / "in.txt").c_str());
    EXPECT_EQ('f', cae.get());
    aio_ifstreamCae caeMissing;
    caeMissing.clear(aio_ios::eofbit);
    caeMissing.open((dir / "absent.txt").c_str());
    EXPECT_EQ(kFail, caeMissing.rdstate());

    // A failed open keeps the file the stream had.
    in.open((dir / "absent.txt").c_str());
    EXPECT_EQ(kFail, in.rdstate());
    in.clear(0);
    in.getline(line, sizeof line);
    EXPECT_STREQ("second", line);
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_fstreamOpen, WritingFreshAndAppending) {
  aio_test::TempDir dir;
  const std::string existing = dir / "existing.txt";
  aio_test::WriteFile(existing, "old");
  const int fds = aio_test::OpenFdCount();
  {
    aio_ofstream fresh;
    fresh.open(existing.c_str(), true);
    EXPECT_EQ(kFail, fresh.rdstate());
    EXPECT_EQ(nullptr, fresh.fptr());
    EXPECT_EQ("old", aio_test::FileText(existing));  // untouched

    aio_ofstream append;
    append.open(existing.c_str(), false);
    append.print("+new");
    EXPECT_EQ(0, append.rdstate());

    aio_ofstream created;
    created.open((dir / "created.txt").c_str(), true);
    created.print("fresh").print_int(1);
    aio_ofstream createdByAppend;
    createdByAppend.open((dir / "appended.txt").c_str(), false);
    createdByAppend.print("a");
    EXPECT_EQ(0, created.rdstate() | createdByAppend.rdstate());

    aio_ofstream unwritable;
    unwritable.open((std::string(kUnwritableDir) + "/aio_test.txt").c_str(), false);
    EXPECT_EQ(kFail, unwritable.rdstate());
    aio_ofstream noDir;
    noDir.open((dir / "no/such/dir.txt").c_str(), true);
    EXPECT_EQ(kFail, noDir.rdstate());
  }
  EXPECT_EQ("old+new", aio_test::FileText(existing));
  EXPECT_EQ("fresh1", aio_test::FileText(dir / "created.txt"));
  EXPECT_EQ("a", aio_test::FileText(dir / "appended.txt"));
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_fstreamOpen, CaeWritingLeavesTheStateOnAFailedOpen) {
  aio_test::TempDir dir;
  aio_test::WriteFile(dir / "existing.txt", "old");
  aio_ofstreamCae fresh;
  fresh.open((dir / "existing.txt").c_str(), true);
  EXPECT_EQ(kFail, fresh.rdstate());
  EXPECT_EQ("old", aio_test::FileText(dir / "existing.txt"));

  aio_ofstreamCae failed;
  failed.open((std::string(kUnwritableDir) + "/aio_test.txt").c_str(), false);
  EXPECT_EQ(0, failed.rdstate());  // no file, state as it was
  EXPECT_EQ(nullptr, failed.fptr());
  failed.print("x");
  EXPECT_EQ(kFail, failed.rdstate());

  aio_ofstreamCae append;
  append.open((dir / "existing.txt").c_str(), false);
  append.print("er").flush();
  EXPECT_EQ("older", aio_test::FileText(dir / "existing.txt"));
}

TEST(aio_fstreamNames, Utf8NamesAreOpenedInTheLocaleForm) {
  aio_test::TempDir dir;
  const std::string utf8 = dir / "caf\xc3\xa9.txt";  // e with acute accent
  {
    ScopedCType ctype("C.UTF-8");
    ASSERT_TRUE(ctype.ok());
    aio_ofstream out;
    out.open(utf8.c_str(), true);
    out.print("utf8").flush();
    EXPECT_EQ(0, out.rdstate());
    EXPECT_EQ("utf8", aio_test::FileText(utf8));  // the same bytes in a UTF-8 locale
    aio_ifstream in;
    in.open(utf8.c_str());
    EXPECT_EQ('u', in.get());
  }
  {
    // A locale that cannot represent the character: the converting streams refuse the name,
    // the Cae variants hand the bytes to the system as they are.
    ScopedCType ctype("C");
    aio_ifstream in;
    in.open(utf8.c_str());
    EXPECT_EQ(kFail, in.rdstate());
    EXPECT_EQ(nullptr, in.fptr());
    aio_ofstream out;
    out.open((dir / "na\xc3\xafve.txt").c_str(), false);
    EXPECT_EQ(kFail, out.rdstate());
    EXPECT_FALSE(aio_test::Exists(dir / "na\xc3\xafve.txt"));
    aio_ifstreamCae cae;
    cae.open(utf8.c_str());
    EXPECT_EQ('u', cae.get());
  }
  {
    // Bytes that are not UTF-8 are refused in any locale.
    ScopedCType ctype("C.UTF-8");
    const std::string latin1 = dir / "caf\xe9.txt";
    aio_test::WriteFile(latin1, "latin1");
    for (const std::string& bad : {latin1, dir / "\xc0\xaf.txt", dir / "\xed\xa0\x80.txt",
                                   dir / "\xf4\x90\x80\x80.txt", dir / "\xe2\x82.txt"}) {
      aio_ifstream in;
      in.open(bad.c_str());
      EXPECT_EQ(kFail, in.rdstate()) << bad;
    }
    aio_ofstreamCae cae;
    cae.open(latin1.c_str(), false);
    cae.print("!").flush();
    EXPECT_EQ("latin1!", aio_test::FileText(latin1));
  }
}

TEST(aio_fstreamPositions, SeekAndTellBeyondTwoGibibytes) {
  aio_test::TempDir dir;
  const std::string path = dir / "sparse.bin";
  const long long far = 3LL << 30;  // 3 GiB: a sparse file
  {
    aio_ofstream out;
    out.open(path.c_str(), true);
    EXPECT_EQ(0, out.tellp());
    out.seekp(far, aio_ios::beg).put('x');
    EXPECT_EQ(far + 1, out.tellp());
    out.seekp(-1, aio_ios::cur).put('y');
    EXPECT_EQ(far + 1, out.tellp());
    out.seekp(-5, aio_ios::beg);  // before the start: fails, changes nothing
    EXPECT_EQ(0, out.rdstate());
    EXPECT_EQ(far + 1, out.tellp());
  }
  aio_ifstream in;
  in.open(path.c_str());
  in.seekg(-1, aio_ios::end);
  EXPECT_EQ(far, in.tellg());
  EXPECT_EQ('y', in.get());
  in.seekg(10, aio_ios::beg);
  EXPECT_EQ(0, in.get());  // the hole reads as zeros
  aio_ifstreamCae cae;
  cae.open(path.c_str());
  cae.seekg(far, aio_ios::beg);
  EXPECT_EQ(far, cae.tellg());
  EXPECT_EQ(0, in.rdstate() | cae.rdstate());
  aio_ofstreamCae append;
  append.open(path.c_str(), false);
  append.seekp(0, aio_ios::end);
  EXPECT_EQ(far + 1, append.tellp());
}

TEST(aio_fstreamPositions, UnattachedStreams) {
  aio_ifstream in;
  aio_ifstreamCae inCae;
  aio_ofstream out;
  aio_ofstreamCae outCae;
  EXPECT_EQ(-1, in.tellg());
  EXPECT_EQ(-1, inCae.tellg());
  EXPECT_EQ(-1, out.tellp());
  EXPECT_EQ(-1, outCae.tellp());
  in.seekg(0, aio_ios::beg);
  inCae.seekg(0, aio_ios::beg);
  out.seekp(0, aio_ios::beg);
  outCae.seekp(0, aio_ios::beg);
  EXPECT_EQ(kFail, in.rdstate() & inCae.rdstate() & out.rdstate() & outCae.rdstate());
}

TEST(aio_fstreamConstruct, AttachesTheFileGiven) {
  const int fds = aio_test::OpenFdCount();
  FILE* borrowed = aio_test::FileWith("b");
  {
    aio_ifstream owned(aio_test::FileWith("a"), true);
    aio_ifstreamCae notOwned(borrowed, false);
    EXPECT_EQ('a', owned.get());
    EXPECT_EQ('b', notOwned.get());
    aio_ofstream out(std::tmpfile(), true);
    aio_ofstreamCae outCae(std::tmpfile(), true);
    EXPECT_TRUE(out.owned() && outCae.owned());
  }
  std::fclose(borrowed);  // still open: the stream did not own it
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

}  // namespace
