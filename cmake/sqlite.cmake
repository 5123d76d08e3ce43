# SQLite for the stand-in stores: fetched once for all build trees as the npm package that carries its source, checked,
# never committed. Gives the target qv_sqlite.
set(QV_SQLITE_PACKAGE better-sqlite3)
set(QV_SQLITE_PACKAGE_VERSION 12.11.1)
set(QV_SQLITE_PACKAGE_SHA512 76af40b40a608393c616d0733c54819771d94231e893981a40233ace1d989346929830acd426e7548f3f1e001242434ab16169b1e20ef5b7a0e71c696216c87c)
set(QV_SQLITE_DIR ${CMAKE_SOURCE_DIR}/build/sqlite/${QV_SQLITE_PACKAGE_VERSION} CACHE PATH
    "Where sqlite3.c and sqlite3.h are, or are put")

# Unpacks into this build tree and renames, so that trees that configure at the same time do not meet.
function(qv_fetch_sqlite)
  set(scratch ${CMAKE_BINARY_DIR}/sqlite-fetch)
  set(archive ${scratch}/${QV_SQLITE_PACKAGE}-${QV_SQLITE_PACKAGE_VERSION}.tgz)
  file(REMOVE_RECURSE ${scratch})
  file(MAKE_DIRECTORY ${scratch})
  message(STATUS "Fetching SQLite: ${QV_SQLITE_PACKAGE} ${QV_SQLITE_PACKAGE_VERSION}")
  execute_process(COMMAND npm pack --loglevel=error ${QV_SQLITE_PACKAGE}@${QV_SQLITE_PACKAGE_VERSION}
                  WORKING_DIRECTORY ${scratch} RESULT_VARIABLE failed OUTPUT_QUIET ERROR_VARIABLE complaint)
  if(failed OR NOT EXISTS ${archive})
    message(FATAL_ERROR
      "SQLite's source could not be fetched (npm pack: ${failed}).\n${complaint}\n"
      "Install npm and connect to its registry, then configure again; or put sqlite3.c and sqlite3.h of any SQLite "
      "from 3.37 on into ${QV_SQLITE_DIR}, where no fetch is needed.")
  endif()
  file(SHA512 ${archive} hash)
  if(NOT hash STREQUAL QV_SQLITE_PACKAGE_SHA512)
    message(FATAL_ERROR
      "${archive} is not the package that was reviewed: its SHA-512 is\n  ${hash}\ninstead of\n"
      "  ${QV_SQLITE_PACKAGE_SHA512}\nLook at what the registry delivers before trusting it; after a change of version, "
      "put its hash into cmake/sqlite.cmake.")
  endif()
  file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${scratch} PATTERNS package/deps/sqlite3/sqlite3.*)
  file(MAKE_DIRECTORY ${QV_SQLITE_DIR})
  foreach(name sqlite3.h sqlite3.c)
    file(RENAME ${scratch}/package/deps/sqlite3/${name} ${QV_SQLITE_DIR}/${name})
  endforeach()
  file(REMOVE_RECURSE ${scratch})
endfunction()

if(NOT EXISTS ${QV_SQLITE_DIR}/sqlite3.c OR NOT EXISTS ${QV_SQLITE_DIR}/sqlite3.h)
  qv_fetch_sqlite()
endif()

# Foreign code: none of our warnings and sanitizers, and the same light optimisation in every build.
add_library(qv_sqlite OBJECT ${QV_SQLITE_DIR}/sqlite3.c)
target_include_directories(qv_sqlite SYSTEM INTERFACE ${QV_SQLITE_DIR})
target_compile_options(qv_sqlite PRIVATE -O1 -w)
target_compile_definitions(qv_sqlite PRIVATE SQLITE_OMIT_LOAD_EXTENSION SQLITE_DQS=0)
