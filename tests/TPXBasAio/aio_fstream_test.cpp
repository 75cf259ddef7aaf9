// Tests of the file streams: open rules, UTF-8 names, 64-bit positions, descriptors.
#include "aio_fstream.h"

#include "TPXBasStringExceptions.h"
#include "aio_TestSupport.h"

#include <gtest/gtest.h>
#include <string>

namespace {

const int kFail = aio_ios::failbit;
const char* kUnwritable = "/proc/aio_test.txt";  // nothing can be created in /proc

void Write(const std::string& path, const char* text) {
  aio_ofstream out;
  out.open(path.c_str(), true);
  out.print(text);
}

TEST(aio_fstreamOpen, ReadingExistingAndMissingFiles) {
  aio_test::TempDir dir;
  Write(dir / "in.txt", "first\nsecond\n");
  const int fds = aio_test::OpenFdCount();
  {
    aio_ifstream in;
    in.open((dir / "in.txt").c_str());
    char line[16];
    in.getline(line, sizeof line);
    EXPECT_STREQ("first", line);
    EXPECT_TRUE(in.owned());
    // A missing file: the state becomes exactly failbit, the stream keeps its file.
    in.clear(aio_ios::eofbit | aio_ios::badbit);
    in.open((dir / "absent").c_str());
    EXPECT_EQ(kFail, in.rdstate());
    in.clear(0);
    in.getline(line, sizeof line);
    EXPECT_STREQ("second", line);

    aio_ifstreamCae cae, caeMissing;
    cae.open((dir / "in.txt").c_str());
    EXPECT_EQ('f', cae.get());
    caeMissing.clear(aio_ios::eofbit);
    caeMissing.open((dir / "absent").c_str());
    EXPECT_EQ(kFail, caeMissing.rdstate());
    EXPECT_EQ(nullptr, caeMissing.fptr());
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_fstreamOpen, WritingFreshAndAppending) {
  aio_test::TempDir dir;
  const std::string existing = dir / "existing.txt";
  Write(existing, "old");
  const int fds = aio_test::OpenFdCount();
  {
    aio_ofstream fresh, append, created, createdByAppend;
    fresh.open(existing.c_str(), true);
    EXPECT_EQ(kFail, fresh.rdstate());
    EXPECT_EQ(nullptr, fresh.fptr());
    EXPECT_EQ("old", aio_test::FileText(existing));  // untouched
    append.open(existing.c_str(), false);
    append.print("+new");
    created.open((dir / "created.txt").c_str(), true);
    created.print("fresh").print_int(1);
    createdByAppend.open((dir / "appended.txt").c_str(), false);
    createdByAppend.print("a");
    EXPECT_EQ(0, append.rdstate() | created.rdstate() | createdByAppend.rdstate());

    for (const std::string& bad : {std::string(kUnwritable), dir / "no/such/dir.txt"}) {
      aio_ofstream out;
      out.open(bad.c_str(), false);
      EXPECT_EQ(kFail, out.rdstate()) << bad;
      // The Cae variant leaves the state as it was; the next output fails.
      aio_ofstreamCae cae;
      cae.open(bad.c_str(), false);
      EXPECT_EQ(0, cae.rdstate()) << bad;
      EXPECT_EQ(kFail, cae.print("x").rdstate()) << bad;
    }
    aio_ofstreamCae caeFresh, caeAppend;
    caeFresh.open(existing.c_str(), true);
    EXPECT_EQ(kFail, caeFresh.rdstate());
    caeAppend.open(existing.c_str(), false);
    append.flush();
    caeAppend.print("!");
  }
  EXPECT_EQ("old+new!", aio_test::FileText(existing));
  EXPECT_EQ("fresh1", aio_test::FileText(dir / "created.txt"));
  EXPECT_EQ("a", aio_test::FileText(dir / "appended.txt"));
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_fstreamNames, Utf8NamesAreOpenedInTheLocaleForm) {
  aio_test::TempDir dir;
  const std::string utf8 = dir / "caf\xc3\xa9", latin1 = dir / "caf\xe9";
  {
    aio_test::ScopedCType ctype("en_US.iso88591");
    ASSERT_TRUE(ctype.ok);
    Write(utf8, "latin1");
    EXPECT_EQ("latin1", aio_test::FileText(latin1));  // one byte in Latin-1
    aio_ifstream in;
    in.open(utf8.c_str());
    EXPECT_EQ('l', in.get());
  }
  // A name the locale cannot represent, or bytes that are not UTF-8, throw the cast exception
  // before the stream is touched; the Cae variants hand the bytes to the system as they are.
  aio_test::ScopedCType ctype("C");
  for (const std::string& bad : {utf8, latin1}) {
    SCOPED_TRACE(bad);
    aio_ifstream in;
    try {
      in.open(bad.c_str());
      ADD_FAILURE() << "no exception";
    } catch (const TPXBasOsStringCast& e) {
      EXPECT_STREQ("Locale", e.GetType());
    }
    aio_ofstream out;
    EXPECT_THROW(out.open(bad.c_str(), false), TPXBasOsStringCast);
    EXPECT_EQ(0, in.rdstate() | out.rdstate());
  }
  {
    aio_test::ScopedCType utf8Locale("C.UTF-8");  // bytes that are not UTF-8 in any locale
    aio_ifstream in;
    EXPECT_THROW(in.open((dir / "\xff\xfe.txt").c_str()), TPXBasOsStringCast);
    EXPECT_EQ(0, in.rdstate());
  }
  aio_ofstreamCae cae;
  cae.open(latin1.c_str(), false);
  cae.print("!").flush();
  EXPECT_EQ("latin1!", aio_test::FileText(latin1));
}

TEST(aio_fstreamPositions, SeekAndTellBeyondTwoGibibytes) {
  aio_test::TempDir dir;
  const std::string path = dir / "sparse.bin";
  const long long far = 3LL << 30;  // a sparse file of 3 GiB
  {
    aio_ofstream out;
    out.open(path.c_str(), true);
    out.seekp(far, aio_ios::beg).put('x');
    EXPECT_EQ(far + 1, out.tellp());
    out.seekp(-1, aio_ios::cur).put('y');
    out.seekp(-5, aio_ios::beg);  // before the start: fails, changes nothing
    EXPECT_EQ(0, out.rdstate());
    EXPECT_EQ(far + 1, out.tellp());
  }
  aio_ifstream in;
  in.open(path.c_str());
  in.seekg(-1, aio_ios::end);
  EXPECT_EQ(far, in.tellg());
  EXPECT_EQ('y', in.get());
  aio_ifstreamCae cae;
  cae.open(path.c_str());
  cae.seekg(far, aio_ios::beg);
  EXPECT_EQ(far, cae.tellg());
  aio_ofstreamCae append;
  append.open(path.c_str(), false);
  append.seekp(0, aio_ios::end);
  EXPECT_EQ(far + 1, append.tellp());

  // Without a file: seeks fail, tells give -1.
  aio_ifstream noIn;
  aio_ofstreamCae noOut;
  EXPECT_EQ(-1, noIn.tellg());
  EXPECT_EQ(-1, noOut.tellp());
  noIn.seekg(0, aio_ios::beg);
  noOut.seekp(0, aio_ios::beg);
  EXPECT_EQ(kFail, noIn.rdstate() & noOut.rdstate());
}

}  // namespace
