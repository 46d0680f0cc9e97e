// RFC 7468 around RFC 5280; names as in RFC 4514, but from the first part to the last.

#include "certificates.h"

#include <string.h>

#include <new>

#include "ber.h"
#include "input.h"
#include "kest/digest.h"
#include "kest/file.h"
#include "kest/frame.h"
#include "names.h"
#include "numbers.h"
#include "posix.h"

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;

namespace census {

namespace {

const char* const kPart = "certificates";
const unsigned short* const kBundle = KEST_TEXT("/etc/ssl/certs/ca-certificates.crt");
const unsigned short* const kBundleFolder = KEST_TEXT("/etc/ssl/certs");
const unsigned short* const kSources = KEST_TEXT("/usr/share/ca-certificates");

const struct {
  const char* object;
  const char* name;
} kNames[] = {
    {"2.5.4.3", "CN"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.6", "C"},
    {"2.5.4.7", "L"},
    {"2.5.4.8", "ST"},
    {"2.5.4.9", "street"},
    {"2.5.4.10", "O"},
    {"2.5.4.11", "OU"},
    {"2.5.4.97", "organizationIdentifier"},
    {"0.9.2342.19200300.100.1.25", "DC"},
    {"1.2.840.113549.1.9.1", "emailAddress"},
};

TBstr NameOf(const TBstr& object) {
  for (const auto& row : kNames) {
    if (object == TBstr(row.object)) return row.name;
  }
  return object;
}

// Content of width bytes a character; false for characters that one unit does not hold.
bool Widen(const SBerItem& item, int width, TBstr* text) {
  for (int i = 0; i + width <= item.length; i += width) {
    unsigned int character = 0;
    for (int k = 0; k < width; ++k) character = character << 8 | item.value[i + k];
    if (character > 0xFFFF) return false;
    *text += static_cast<unsigned short>(character);
  }
  return item.length % width == 0;
}

// The bytes of the UTF-8 form of a string of any kind.
bool Utf8Bytes(const SBerItem& item, TBstr* bytes) {
  if (item.tag == kBerUtf8) {
    *bytes = TBstr(reinterpret_cast<const char*>(item.value), item.length);
    return true;
  }
  TBstr text;
  const int width = item.tag == kBerBmp ? 2 : item.tag == kBerUniversal ? 4 : 1;
  if (!Widen(item, width, &text)) return false;
  *bytes = ToUtf8(text);
  return true;
}

bool IsEscaped(const TBstr& bytes, int index) {
  const unsigned short unit = bytes.GetAt(index);
  if (unit == u'#') return index == 0;
  if (unit == u' ') return index == 0 || index == bytes.GetLength() - 1;
  return unit != 0 && KEST::ucschr(KEST_TEXT("\"+,;<>\\"), unit) != nullptr;
}

TBstr EscapeValue(const TBstr& bytes) {
  TBstr text;
  for (int i = 0; i < bytes.GetLength(); ++i) {
    const unsigned short unit = bytes.GetAt(i);
    TBstr piece(unit, 1);
    if (unit < u' ' || unit == 0x7F) {
      piece.Format(KEST_TEXT("\\%02X"), unit);
    } else if (IsEscaped(bytes, i)) {
      piece = TBstr("\\") + piece;
    }
    text += piece;
  }
  return text;
}

// One attribute and its value: "CN=Some Name".
bool PutAttribute(const SBerItem& pair, TBstr* text) {
  SBerItem object, value;
  TBstr bytes;
  BerReader reader(pair);
  if (!reader.Next(&object, kBerObject) || !reader.Next(&value)) return false;
  const TBstr name = NameOf(ObjectText(object));
  if (name.IsEmpty() || !Utf8Bytes(value, &bytes)) return false;
  *text += name + KEST_TEXT("=") + EscapeValue(bytes);
  return true;
}

bool PutName(const SBerItem& name, TBstr* text) {
  BerReader sets(name);
  while (!sets.IsAtEnd()) {
    SBerItem set, pair;
    if (!sets.Next(&set, kBerSet)) return false;
    BerReader pairs(set);
    for (bool first = true; !pairs.IsAtEnd(); first = false) {
      if (!text->IsEmpty()) *text += first ? ", " : " + ";
      if (!pairs.Next(&pair, kBerSequence) || !PutAttribute(pair, text)) return false;
    }
  }
  return true;
}

bool FindSubject(const SCertificate& certificate, SBerItem* subject) {
  SBerItem whole, signedPart, item;
  if (!BerReader(certificate.der, certificate.size).Next(&whole, kBerSequence)) return false;
  if (!BerReader(whole).Next(&signedPart, kBerSequence)) return false;
  BerReader reader(signedPart);
  if (!reader.Next(&item)) return false;
  if (item.tag == kBerVersion && !reader.Next(&item)) return false;  // item is the serial number
  if (!reader.Next(&item, kBerSequence)) return false;               // algorithm
  if (!reader.Next(&item, kBerSequence)) return false;               // issuer
  if (!reader.Next(&item, kBerSequence)) return false;               // validity
  return reader.Next(subject, kBerSequence);
}

void Ignore(void*, const SBerElement&) {}

bool Examine(SCertificate* certificate) {
  SBerItem subject;
  if (!WalkBer(certificate->der, certificate->size, Ignore, nullptr)) return false;
  if (!FindSubject(*certificate, &subject) || !PutName(subject, &certificate->subject)) {
    return false;
  }
  KEST::TShaDigest sha1;
  sha1.Update(certificate->der, certificate->size);
  sha1.Finish(certificate->sha1, sizeof(certificate->sha1));
  return true;
}

bool IsCertificateName(const TBstr& name) {
  const TBstr end = name.Right(4);
  return end == KEST_TEXT(".crt") || end == KEST_TEXT(".pem");
}

// The files of certificates in a folder, with recursive also below it.
void FindFiles(const TBstr& system, const TBstr& folder, bool recursive, TextList* files) {
  const TBstr pattern = GlobLiteral(SystemSpec(system, folder)) + KEST_TEXT("/*");
  TFileFinder finder;
  for (bool more = finder.Find(pattern.GetString(), false); more; more = finder.FindNext(true)) {
    const TBstr path = TFile::AppendFileNameToSpec(folder, finder.name);
    if (finder.isDirectory) {
      if (recursive) FindFiles(system, path, true, files);
    } else if (IsCertificateName(finder.name)) {
      files->Add(path);
    }
  }
}

}  // namespace

SCertificate::~SCertificate() { KestMemFree(der); }

Certificates::~Certificates() {
  for (int i = 0; i < GetCount(); ++i) delete static_cast<SCertificate*>(certificates[i]);
}

void Certificates::Read(const TBstr& system, Notes& notes) {
  TextList files;
  TFile bundle;
  if (bundle.Open(SystemSpec(system, kBundle), 0, false)) files.Add(kBundle);
  if (files.GetCount() == 0) FindFiles(system, kBundleFolder, false, &files);
  if (files.GetCount() == 0) FindFiles(system, kSources, true, &files);
  if (files.GetCount() == 0) notes.Add(kPart, kBundleFolder, "no certificates here");
  files.Sort();
  for (int i = 0; i < files.GetCount(); ++i) ReadFile(system, files.GetAt(i), notes);
}

void Certificates::ReadFile(const TBstr& system, const TBstr& file, Notes& notes) {
  TBstr text, reason, line, base64;
  if (!ReadWhole(SystemSpec(system, file), &text, &reason)) return notes.Add(kPart, file, reason);
  bool inside = false;
  int number = 0;
  for (Lines lines(text); lines.Next(&line);) {
    line.Remove(u'\r');
    if (line == KEST_TEXT("-----BEGIN CERTIFICATE-----")) {
      inside = true;
      base64.Empty();
    } else if (inside && line == KEST_TEXT("-----END CERTIFICATE-----")) {
      inside = false;
      ++number;
      if (Add(file, base64)) continue;
      notes.Add(kPart, file, TBstr("certificate ") + Decimal(number) + TBstr(" cannot be read"));
    } else if (inside) {
      base64 += line;
    }
  }
}

bool Certificates::Add(const TBstr& file, const TBstr& base64) {
  auto* certificate = new (std::nothrow) SCertificate;
  if (certificate == nullptr) return false;
  const int room = base64.GetLength() / 4 * 3;
  certificate->file = file;
  certificate->der = static_cast<unsigned char*>(KestMemAlloc(static_cast<unsigned int>(room + 1)));
  if (certificate->der != nullptr) {
    certificate->size = KestBase64ToBin(base64.GetString(), certificate->der, room);
  }
  const int count = GetCount();
  if (certificate->size > 0 && Examine(certificate)) certificates.Add(certificate);
  if (GetCount() > count) return true;
  delete certificate;
  return false;
}

}  // namespace census
