/// @file atr_tr.h
/// The translation dictionary of the message formatter and the choice of locale.
#ifndef ATR_TR_H
#define ATR_TR_H

#include "KLDTPXBasExport.h"

class atr_StringBase;

/// Chooses the process locales from the environment and finds the dictionary file.
///
/// With KALDER_SUPPORTED_LOCALE and KALDER_TRANSLATION_DICTIONARY both set, the whole locale
/// becomes the first of "en", "en_US", "English_United States.1252" and "C" that the system
/// accepts, character classification follows KALDER_LANG (the environment's default when it
/// is unset or empty), numbers keep the period ("C"), and the dictionary is the relative path
/// KALDER_TRANSLATION_DICTIONARY. Otherwise the locales stay as they are and the dictionary is
/// /TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py.
/// In both cases KLD_LC_ALL is set to the full locale name afterwards.
///
/// The dictionary is searched below QFN_DICT_DIR (when set) and then below each directory of
/// the ";"-separated KAL_PATH; without KAL_PATH nothing is searched. Gives true and, when path
/// is not null, stores the full name of the first regular file that opens for reading.
/// Changes process-wide state: meant for start-up, never while other threads build messages.
KLDTPXBAS_API bool atr_setlocale(atr_StringBase* path);

/// on = true loads the dictionary unless a load was already made (successful or not) since
/// the last release; on = false releases it (atr_trReleaseDB). A missing, unreadable or
/// unusable file leaves every text untranslated; nothing is reported but the warnings about
/// lines that are not valid UTF-8.
KLDTPXBAS_API void atr_tr_enable(bool on);

/// Frees the dictionary; the next atr_tr_enable(true) reads the file again.
KLDTPXBAS_API void atr_trReleaseDB();

#endif  // ATR_TR_H
