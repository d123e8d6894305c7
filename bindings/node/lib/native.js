'use strict';

// The functions of zav.h. Every call is made by the thread that loads this file.

const koffi = require('koffi');

const LogCallback = koffi.pointer(koffi.proto('void ZAVlogCallback(int, int, void *, const void *, const void *)'));

// Null, a BigInt address, or a text, which is passed as wide characters.
const PROTOTYPES = {
  init: ['const char *', LogCallback, 'void *', 'const wchar_t *', 'const wchar_t *', '_Out_ void **'],
  free: ['void *'],
  hw_init: ['void *', LogCallback, 'void *', '_Out_ void **'],
  hw_setopt: ['void *', 'int', 'unsigned char'],
  hw_run: ['void *'],
  hw_get_group_name: ['void *', 'int', '_Out_ void **'],
  hw_get_group_instances: ['void *', 'int', '_Out_ int *'],
  hw_get_fields: ['void *', 'int', 'int', '_Out_ void **', '_Out_ int *'],
  hw_get_value: ['void *', 'int', 'int', 'const void *', '_Out_ void **'],
  hw_free: ['void *'],
  sw_init: ['void *', LogCallback, 'void *', '_Out_ void **'],
  sw_setopt_variable: ['void *', 'const wchar_t *', 'const wchar_t *', 'const wchar_t *'],
  sw_setopt_config: ['void *', 'const wchar_t *', 'const wchar_t *', 'const wchar_t *'],
  sw_evaluate_file: ['void *', 'const wchar_t *'],
  sw_evaluate_multi: ['void *', 'const wchar_t **', 'unsigned int'],
  sw_get_results: ['void *', '_Out_ void **', '_Out_ int *'],
  sw_get_value: ['void *', 'const void *', 'const void *', '_Out_ void **'],
  sw_get_variables: ['void *', 'const void *', '_Out_ void **', '_Out_ int *'],
  sw_get_metadata: ['void *', 'const void *', '_Out_ void **'],
  sw_get_guid: ['void *', 'const void *', '_Out_ void **'],
  sw_get_warnings: ['void *', '_Out_ void **', '_Out_ int *'],
  sw_free: ['void *'],
};

/** The functions of the shared library at this path, by name without the prefix. */
function load(path) {
  let library;
  try {
    library = koffi.load(path);
  } catch (error) {
    throw new Error(
      `cannot load ${path} (${error.message}); install the package libzav1, ` +
        'or name the file with the option library or the environment variable ZAV_LIBRARY',
    );
  }
  const functions = {};
  for (const [name, parameters] of Object.entries(PROTOTYPES)) {
    functions[name] = library.func(`ZAV_${name}`, 'int', parameters.map((type) => outOf(type)));
  }
  return functions;
}

function outOf(type) {
  if (typeof type !== 'string' || !type.startsWith('_Out_ ')) return type;
  return koffi.out(koffi.pointer(type.slice('_Out_ '.length).replace(/ ?\*$/, '').trim()));
}

const cLibrary = koffi.load(null);
const wcslen = cLibrary.func('size_t wcslen(const void *)');

/** A copy of a text of the library, whose wide characters are Unicode characters. */
function textAt(address) {
  // Of an empty text it makes null.
  return koffi.decode.string32(address) ?? '';
}

/** A copy of a text whose wide characters are the bytes of UTF-8, signed: metadata and warnings. */
function bytesAt(address) {
  const wide = new Int32Array(koffi.view(address, 4 * Number(wcslen(address))));
  return Buffer.from(Uint8Array.from(wide)).toString('utf8');
}

/** The pointers of an array of the library. */
function addressesAt(address, count) {
  return address && count > 0 ? Array.from(koffi.decode(address, koffi.array('void *', count))) : [];
}

function messageAt(address) {
  return address ? (koffi.decode.string(address) ?? '') : '';
}

/** Lets the C library convert all characters in messages that this thread causes. */
function useUtf8Messages() {
  const newlocale = cLibrary.func('void *newlocale(int, const char *, void *)');
  const uselocale = cLibrary.func('void *uselocale(void *)');
  const kCharacterTypeMask = 1;
  const locale = newlocale(kCharacterTypeMask, 'C.UTF-8', null);
  if (locale) uselocale(locale);
}

module.exports = { LogCallback, addressesAt, bytesAt, koffi, load, messageAt, textAt, useUtf8Messages };
