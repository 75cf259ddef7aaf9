# Script mode: runs the demo (after installing the build into PREFIX when BUILD_DIR is given)
# and checks its exit code and the key lines of its account, in order.
if(BUILD_DIR)
  file(REMOVE_RECURSE ${PREFIX})
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
                  RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "install failed (${rc}): ${err}")
  endif()
endif()

# A clean environment for what the demo reads, so the account does not depend on the caller's.
foreach(var QFN_DICT_DIR KLD_QA_PRINT KLD_USE_NATURAL_ORDER_SORT ATR_SUMMARY KAL_CAM_NUMBER_OF_BINS
            KAL_CAM_MEMORY_ALIGNMENT KAL_CAM_TRACKINGTOL)
  unset(ENV{${var}})
endforeach()

execute_process(COMMAND ${DEMO} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err
                TIMEOUT 60)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "kld_demo exited with ${rc}\n${out}\n${err}")
endif()

set(expected
  "threading model after:  STD_THREADS, multi-threaded yes"
  "  Copy mesh.dat to backup/"
  "  solver: 42 iterations"
  "dictionary: fr_FR/kld_demo_Dict.py"
  "  Copier vers backup/ depuis mesh.dat"
  "  solver : 42 itérations"
  "  Après 12 pas, résidu 1.500e-06"
  "  Ouvrir le fichier (menu)"
  "  user:      rgx_match : erreur d'exécution : 5"
  "  developer: Exception : rgx_match : erreur d'exécution : 5 dans le fichier TPXBase/TPXBasExceptions.m/src/TPXBasExcDefaultFactory à la ligne "
  "  rethrown copy is a TPXBasExecException with count 5"
  "  developer: Exception : Échec d'assertion : mesh.nodes > 0 dans le fichier kld_demo.cpp à la ligne 100"
  "natural order: run1.05.res run1.5.res run1.res run2.res run2b.res run3.res run10.res run21.res run100.res"
  "  to Latin-1 without a replacement: -2"
  "47 72 FC DF 65 20 E0 20 32 30 20 3F  (12 bytes)"
  "  invalid input C3 28 to Latin-1: -1"
  "0047 0072 00FC 00DF 0065 0020 00E0 0020 0032 0030 0020 20AC  (12 units)"
  "  UTF-16 back to UTF-8 equals the original: yes"
  "  locale form back to UTF-8 equals the original: yes"
  "mesh: 8 of 8 blocks granted"
  "purged, in order: geometry-3 geometry-2 geometry-1 results-1 results-3 results-2\n"
  "poolId 0 (cache): current 0.000000"
  "poolId 1 (mesh): current 16.000244"
  "  pool mesh: current 16777472, peak 16777472"
  "after freeing: 0 bytes in use"
  "library finalised (the unload finalises the rest), tally 0")
set(rest "${out}")
foreach(line IN LISTS expected)
  string(FIND "${rest}" "${line}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "missing or out of order: '${line}'\n--- output ---\n${out}\n${err}")
  endif()
  string(LENGTH "${line}" n)
  math(EXPR at "${at} + ${n}")
  string(SUBSTRING "${rest}" ${at} -1 rest)
endforeach()
if(out MATCHES "kept its data")
  message(FATAL_ERROR "a cached item was not purged although the limit needed its memory\n${out}")
endif()
if(NOT err MATCHES "WARNING:pool 1 \\(mesh\\) overflows")
  message(FATAL_ERROR "no overflow warning of the mesh pool on stderr\n${err}")
endif()
message(STATUS "kld_demo: every step reported as expected")
