// kld_demo.cpp: a small host doing what a solver does with the library at start-up, while it
// runs and at shut-down, printing an account of each step. Everything it prints is fixed by
// its inputs (sizes, names, the shipped dictionary), so two runs give the same text.
#include "KLDTPXBasCoreUtils.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unistd.h>

namespace {

const TPXBasStringMode kUtf8(false);

void Section(int n, const char* title) { std::printf("\n== %d. %s ==\n", n, title); }

void PrintBytes(const char* label, const char* bytes, int n) {
  std::printf("  %-22s", label);
  for (int i = 0; i < n; ++i) std::printf(" %02X", static_cast<unsigned char>(bytes[i]));
  std::printf("  (%d bytes)\n", n);
}

// The directory of this program, with a trailing '/', or "" when it cannot be found.
void ProgramDirectory(char* out, size_t size) {
  out[0] = '\0';
  ssize_t n = readlink("/proc/self/exe", out, size - 1);
  if (n <= 0) return;
  out[n] = '\0';
  char* slash = std::strrchr(out, '/');
  if (slash != nullptr) slash[1] = '\0';
}

// The tail "<dir>/<file>" of a path: the part that does not depend on where the demo lives.
const char* PathTail(const char* path) {
  const char* last = std::strrchr(path, '/');
  if (last == nullptr) return path;
  for (const char* p = last - 1; p > path; --p)
    if (*p == '/') return p + 1;
  return path;
}

// ---------------------------------------------------------------------------------------------
// 2. Messages and their translation.

void ShowMessages() {
  std::printf("  %s\n", atr("Copy %s to %s", "mesh.dat", "backup/", kUtf8).CStr());
  std::printf("  %s\n", atr("%2$s: %1$d iterations", 42, "solver", kUtf8).CStr());
  std::printf("  %s\n", atr("Residual %e after %d steps", 1.5e-6, 12, kUtf8).CStr());
  std::printf("  %s\n", atr_raw("Open the file\\@menu", kUtf8).CStr());
}

void Translation(const char* programDir) {
  // A host names its directories before it chooses the locale: KAL_PATH lists where the
  // dictionary may be (next to the build-tree binary, or under share/ when installed), and a
  // user's QFN_DICT_DIR, when set, is searched first.
  char kalPath[8192];
  std::snprintf(kalPath, sizeof kalPath,
                "%sdictionaries;%s../share/KLDTPXBasCoreUtils/dictionaries", programDir,
                programDir);
  setenv("KAL_PATH", kalPath, 1);
  setenv("KALDER_SUPPORTED_LOCALE", "1", 1);
  setenv("KALDER_TRANSLATION_DICTIONARY", "fr_FR/kld_demo_Dict.py", 1);
  setenv("KALDER_LANG", "C.UTF-8", 1);

  std::printf("English (no dictionary loaded yet):\n");
  ShowMessages();

  atr_String path;
  bool found = atr_setlocale(&path);
  std::printf("locale chosen: character classification %s, numbers %s\n",
              std::setlocale(LC_CTYPE, nullptr), std::setlocale(LC_NUMERIC, nullptr));
  if (!found) {
    std::printf("dictionary: not found below KAL_PATH; messages stay in English\n");
    return;
  }
  std::printf("dictionary: %s\n", PathTail(path.CStr()));
  atr_tr_enable(true);
  std::printf("French (dictionary loaded; numbered arguments reordered):\n");
  ShowMessages();
  std::printf("  %s\n", atr("A text the dictionary does not know: %s", "kept", kUtf8).CStr());
}

// ---------------------------------------------------------------------------------------------
// 3. Exceptions.

void Exceptions() {
  try {
    TPXBasExceptionModel::throwExecException(5);
  } catch (const TPXBasException& e) {
    std::printf("caught code %d\n  user:      %s\n  developer: %s\n", e.GetCode(),
                e.UserReport(kUtf8).CStr(), e.DeveloperReport(kUtf8).CStr());
    // A handler that must pass the failure on later keeps a copy and rethrows it as the
    // concrete class.
    TPXBasException* kept = e.Clone();
    try {
      kept->Propagate();
    } catch (const TPXBasExecException& again) {
      std::printf("  rethrown copy is a TPXBasExecException with count %d\n", again.GetCount());
    }
    delete kept;
  }

  try {
    TPXBasAssertException("mesh.nodes > 0").Throw("kld_demo.cpp", 100);
  } catch (const TPXBasException& e) {
    std::printf("caught code %d from %s:%d\n  developer: %s\n", e.GetCode(), e.GetFile(),
                e.GetLine(), e.DeveloperReport(kUtf8).CStr());
  }

  TPXString bad;
  bad.BuildFromUTF8("caf\xC3\xA9");
  try {
    throw TPXBasFromUTF8Exception(bad);
  } catch (const TPXBasException& e) {
    std::printf("caught code %d (its own text has no translation)\n  developer: %s\n", e.GetCode(),
                e.DeveloperReport(kUtf8).CStr());
  }

  std::printf("system error ENOENT: %s\n", TPXBasSystemError(ENOENT).AsString());
}

// ---------------------------------------------------------------------------------------------
// 4. Natural order.

void NaturalSort() {
  const char* names[] = {"run10.res", "run2.res",  "run1.res",    "run100.res", "run21.res",
                         "run3.res",  "run2b.res", "run1.05.res", "run1.5.res"};
  const int n = static_cast<int>(sizeof names / sizeof names[0]);
  std::printf("natural-order switch: %s\n", atr_getNaturalOrder() ? "on" : "off");
  std::sort(names, names + n, [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
  std::printf("byte order:   ");
  for (const char* name : names) std::printf(" %s", name);
  std::sort(names, names + n, [](const char* a, const char* b) { return strnatcmp(a, b) < 0; });
  std::printf("\nnatural order:");
  for (const char* name : names) std::printf(" %s", name);
  std::printf("\n");
}

// ---------------------------------------------------------------------------------------------
// 5. Encodings.

void Encodings() {
  const char* utf8 =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xC3\xA0 20 \xE2\x82\xAC";  // "Grüße à 20 €"
  const int utf8Length = static_cast<int>(std::strlen(utf8));
  PrintBytes("UTF-8:", utf8, utf8Length);
  std::printf("  valid UTF-8: %s\n", atr_encoding_validate(atr_EncodingUtf8, utf8) ? "yes" : "no");

  // Measure with a null output, then convert into exactly that much room (+1 terminator).
  char latin1[64];
  int strict = atr_utf8_to_encoding(atr_EncodingLatin1, nullptr, utf8, '\0');
  std::printf("  to Latin-1 without a replacement: %d (the euro sign has no Latin-1 form)\n",
              strict);
  int n = atr_utf8_to_encoding(atr_EncodingLatin1, nullptr, utf8, '?');
  if (n >= 0 && n < static_cast<int>(sizeof latin1)) {
    atr_utf8_to_encoding(atr_EncodingLatin1, latin1, utf8, '?');
    PrintBytes("Latin-1, '?' for €:", latin1, n);
    char back[128];
    int m = atr_utf8_from_encoding(back, atr_EncodingLatin1, latin1);
    std::printf("  back to UTF-8: \"%s\" (%d bytes)\n", back, m);
  }
  std::printf("  invalid input C3 28 to Latin-1: %d\n",
              atr_utf8_to_encoding(atr_EncodingLatin1, nullptr, "\xC3\x28", '?'));

  TPXString text;
  text.BuildFromUTF8(utf8);
  unsigned int units = 0;
  text.ConvertToUTF16(nullptr, &units);
  unsigned short utf16[64];
  std::printf("  TPXString: %d characters in %d bytes\n", text.GetLengthInChar(),
              text.GetLengthInByte());
  if (units <= sizeof utf16 / sizeof utf16[0] &&
      text.ConvertToUTF16(utf16, &units) == TPXString::Success) {
    std::printf("  %-22s", "UTF-16:");
    for (unsigned int i = 0; i < units; ++i) std::printf(" %04X", utf16[i]);
    std::printf("  (%u units)\n", units);
    TPXString again;
    again.BuildFromUTF16(utf16, units);
    std::printf("  UTF-16 back to UTF-8 equals the original: %s\n",
                again.Compare(text) == 0 ? "yes" : "no");
  }

  // The process locale's form (character classification chose C.UTF-8 above).
  atr_String local = atr_MakeAtrString(utf8).UTF8ToLocale();
  PrintBytes("locale form:", local.CStr(), static_cast<int>(local.Length()));
  std::printf("  locale form back to UTF-8 equals the original: %s\n",
              std::strcmp(local.LocaleToUTF8().CStr(), utf8) == 0 ? "yes" : "no");
}

// ---------------------------------------------------------------------------------------------
// 6. Cache manager.

// A cached object whose bulk data is one block of the "cache" pool; the manager may ask it to
// give the block up when memory runs short. Purges are recorded in order.
class DemoItem : public TPXBasCamMemoryItem {
 public:
  static const char* s_purged[16];
  static std::atomic<int> s_purgedCount;

  DemoItem(const char* name, TPXBasCamPool* pool, unsigned int bytes)
      : m_name(name), m_pool(pool), m_block(pool->Alloc(bytes)) {}
  ~DemoItem() override { m_pool->Free(m_block); }
  unsigned int BulkSize() const override { return m_block ? m_pool->AllocSize(m_block) : 0; }
  unsigned int FreeBulkData() override {
    unsigned int freed = m_pool->Free(m_block);
    m_block = nullptr;
    int at = s_purgedCount.fetch_add(1);
    if (at < 16) s_purged[at] = m_name;
    return freed;
  }
  bool HasData() const { return m_block != nullptr; }
  const char* Name() const { return m_name; }

 private:
  const char* m_name;
  TPXBasCamPool* m_pool;
  void* m_block;
};
const char* DemoItem::s_purged[16];
std::atomic<int> DemoItem::s_purgedCount{0};

void CacheManager() {
  TPXBasCamCacheManager& cm = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Instance();
  const unsigned int request = 2u * 1048576u;
  const unsigned int block = cm.GetAllocationSize(cm.GetBin(request), request);
  cm.SetMemoryLimit(8 * block);
  std::printf("request %u bytes -> block %u bytes; memory limit 8 blocks = %u bytes\n", request,
              block, cm.MemoryLimit());

  const char* names[] = {"cache", "mesh"};
  int first = cm.AddPools(2, names);
  TPXBasCamPool* cache = cm.GetPool(first);
  TPXBasCamPool* mesh = cm.GetPool(first + 1);
  int results = cm.AddPurgeList(2);
  int geometry = results + 1;
  cm.SetDbFile(stdout);  // pool accounting and reports go to standard output
  mesh->SetWarnOverflow(true);
  cm.SetPoolLimit(mesh->Id(), 0, 4 * block, 0.5);  // warns above 6 blocks

  // Six cached items, three per list: results are appended (purged oldest first), geometry
  // items prepended (purged newest first); geometry is visited first.
  const char* itemNames[] = {"results-1",  "results-2",  "results-3",
                             "geometry-1", "geometry-2", "geometry-3"};
  DemoItem* items[6];
  for (int i = 0; i < 6; ++i) items[i] = new DemoItem(itemNames[i], cache, request);
  for (int i = 0; i < 3; ++i) cm.AddItem(results, TPXBasCamCacheAppend, items[i], items[i]);
  for (int i = 3; i < 6; ++i) cm.AddItem(geometry, TPXBasCamCachePrepend, items[i], items[i]);
  int* order = cm.PurgeOrder();
  order[0] = geometry;
  order[1] = results;
  std::printf("6 cached items hold %u bytes in 2 purge lists\n", cache->MemoryCurrent());

  // The owner of results-2 uses its data: it takes the item out first, then puts it back.
  bool stillThere = cm.RemoveItem(items[1]);
  std::printf("results-2 taken out for use: data %s\n", stillThere ? "still there" : "purged");
  cm.AddItem(results, TPXBasCamCacheAppend, items[1], items[1]);

  // The purge thread frees cached data while the solver allocates past the limit.
  TPXBasCamIOThreadTask task(&cm);
  std::thread purger([&task] { task.Run(0); });
  // Once the purge thread runs, the allocating thread only signals it and never purges
  // itself: one thread purges, so the items go in the purge lists' order, every run.
  while (!cm.PurgeThreadRunning()) std::this_thread::yield();
  void* blocks[8];
  int granted = 0;
  for (void*& b : blocks) granted += (b = mesh->Alloc(request)) != nullptr;
  std::printf("mesh: %d of 8 blocks granted (%u bytes asked in all, limit %u)\n", granted,
              14 * block, cm.MemoryLimit());
  cm.StopPurgeTask();
  purger.join();

  std::printf("purged, in order:");
  for (int i = 0; i < DemoItem::s_purgedCount.load() && i < 16; ++i)
    std::printf(" %s", DemoItem::s_purged[i]);
  std::printf("\n");
  for (DemoItem* item : items)
    if (cm.RemoveItem(item) || item->HasData()) std::printf("  %s kept its data\n", item->Name());

  std::printf("pool report:\n");
  cache->MemoryReport();
  mesh->MemoryReport();

  unsigned int current, freeList, allocsAtMax;
  int pools, lists, bins;
  unsigned int *poolCurrent, *poolAtMax, *poolStaged, *poolMax, *listCurrent, *listAtMax, *binFree,
      *binFreeAtMax;
  cm.MemorySummary(current, freeList, pools, poolCurrent, poolAtMax, poolStaged, poolMax, lists,
                   listCurrent, listAtMax, bins, binFree, binFreeAtMax, allocsAtMax);
  std::printf("memory summary: %u bytes in use, %u on free lists, %d pools, %d lists, %d bins\n",
              current, freeList, pools, lists, bins);
  for (int p = 0; p < pools && poolCurrent != nullptr; ++p)
    std::printf("  pool %s: current %u, peak %u\n", cm.GetPool(first + p)->Name(), poolCurrent[p],
                poolMax[p]);
  for (int l = 0; l < lists && listCurrent != nullptr; ++l)
    std::printf("  list %d: %u bytes of cached data\n", l, listCurrent[l]);

  for (void* b : blocks) mesh->Free(b);
  for (DemoItem* item : items) delete item;
  cm.SetDbFile(nullptr);
  std::printf("after freeing: %u bytes in use\n", cm.MemoryCurrent());
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  char programDir[4096];
  ProgramDirectory(programDir, sizeof programDir);

  Section(1, "Start-up");
  int tally = 0;
  TPXBasCoreUtils_initialize(tally);  // nests on the initialisation made at load time
  std::printf("library initialised (nested on the load-time initialisation), tally %d\n", tally);
  std::printf("threading model before: %s, multi-threaded %s\n",
              TPXBasAtiThreadingModel::AsString(),
              TPXBasAtiThreadingModel::multiThread() ? "yes" : "no");
  TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact);  // the model owns it
  std::printf("threading model after:  %s, multi-threaded %s\n",
              TPXBasAtiThreadingModel::AsString(),
              TPXBasAtiThreadingModel::multiThread() ? "yes" : "no");

  Section(2, "Messages");
  Translation(programDir);

  Section(3, "Exceptions");
  Exceptions();

  Section(4, "Natural order of result files");
  NaturalSort();

  Section(5, "Encodings");
  Encodings();

  Section(6, "Cache manager");
  CacheManager();

  Section(7, "Shut-down");
  atr_tr_enable(false);
  TPXBasCoreUtils_finalize(tally);
  std::printf("library finalised (the unload finalises the rest), tally %d\n", tally);
  return tally == 0 ? 0 : 1;
}
