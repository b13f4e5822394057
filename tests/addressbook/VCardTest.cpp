#include <gtest/gtest.h>

#include "addressbook/VCardEditor.h"
#include "addressbook/VCardPerson.h"
#include "addressbook/VCardReader.h"

namespace zolvar {
namespace {

/// A card of the given lines, each ended as told.
std::string card(const std::string& lines, const std::string& version = "3.0",
                 const std::string& lineEnd = "\r\n") {
  std::string text;
  for (const char character : "BEGIN:VCARD\nVERSION:" + version + "\n" + lines + "END:VCARD\n") {
    text += character == '\n' ? lineEnd : std::string(1, character);
  }
  return text;
}

/// A person's values in one line each, to compare and to read.
std::string described(const ABPerson& person) {
  std::string text;
  for (const auto& [property, value] : person.values) {
    text += property + "=";
    if (const auto* plain = std::get_if<std::string>(&value)) text += *plain;
    if (const auto* date = std::get_if<ABDate>(&value)) text += textOfDate(*date);
    if (const auto* list = std::get_if<ABMultiValue>(&value)) {
      for (const auto& entry : *list) {
        text += "[" + entry.label + (entry.isPrimary ? "!" : "") + ": " + entry.value + "]";
      }
    }
    text += "\n";
  }
  return text;
}

TEST(VCardReader, understandsWhatIsWritten) {
  const struct {
    const char* version;
    const char* lines;
    const char* expected;
  } cases[] = {
      {"3.0", "N:Lee;Ann;M.;Dr;Jr\nFN:Dr Ann\n",
       "First=Ann\nLast=Lee\nMiddle=M.\nSuffix=Jr\nTitle=Dr\n"},
      {"3.0", "n:O\\;Neil\\, sons;;;;\n", "Last=O;Neil, sons\n"},
      {"4.0", "FN:Only Whole\n", "First=Only Whole\n"},
      {"4.0", "FN:Acme\nORG:Acme;Lab;Floor 2\n", "Department=Lab\nOrganization=Acme\n"},
      // folding, in the middle of a character too
      {"3.0", "NOTE:one\\ntwo\n  thr\n\tee\\\\ Zo\xC3\n \xAB\n",
       "Note=one\ntwo three\\ Zo\u00EB\n"},
      {"3.0", "TEL;TYPE=WORK,FAX:1\nTEL;TYPE=\"home,voice\":2\nTEL;type=CELL;type=pref:3\nTEL:4\n",
       "Phone=[phone work fax: 1][phone home: 2][phone mobile!: 3][: 4]\n"},
      {"2.1", "TEL;HOME;VOICE:1\nTEL;PAGER:2\nTEL;VOICE:3\n",
       "Phone=[phone home: 1][phone pager: 2][phone main: 3]\n"},
      {"4.0", "TEL;VALUE=uri;PREF=1;TYPE=work:tel:+1-5\nIMPP:xmpp:a@b\nIMPP;TYPE=home:aim:c\n",
       "AIMInstant=[AIM home: c]\nJabberInstant=[: a@b]\nPhone=[phone work!: +1-5]\n"},
      {"3.0",
       "item1.URL:http://a/?b,c\nitem1.X-ABLabel:_$!<HomePage>!$_\nitem2.EMAIL;TYPE=INTERNET:x@y\n"
       "ITEM2.X-ABLabel:club\n",
       "Email=[club: x@y]\nURLs=[home page: http://a/?b,c]\n"},
      {"3.0", "ADR;TYPE=HOME:;;Main\\; St 1;Town;;1\\,2\n",
       "Address=[address home: ;;Main\\; St 1;Town;;1,2;]\n"},
      {"2.1", "N;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCl=\nler;J=F6=\n=72g\n",
       "First=J\u00F6rg\nLast=M\u00FCller\n"},
      {"2.1", "NOTE;ENCODING=QUOTED-PRINTABLE:a=\n b=\nc\n d\n", "Note=a bcd\n"},
      {"2.1", "PHOTO;BASE64:aGVs\nbG8=\n\n stray\nTITLE:x\n", "Image=hello\nJobTitle=x\n"},
      {"2.1", "NOTE;QUOTED-PRINTABLE:a=0D=0Ab=3D=ZZ=\n", "Note=a\nb==ZZ=\n"},
      {"2.1", "N:M\xFCller\nNICKNAME:\x80\n", "Last=M\u00FCller\nNickname=\u20AC\n"},
      {"2.1", "PHOTO;JPEG;ENCODING=BASE64:\n aGVs\nbG8=\n\nTITLE:Boss\n",
       "Image=hello\nJobTitle=Boss\n"},
      {"3.0", "PHOTO;BASE64:\n  aGVs\n  bG8=\n", "Image=hello\n"},
      {"2.1", "N;BASE64:M\xFCller\n", "Last=M\u00FCller\n"},
      {"2.1", "N;X=QUOTED-PRINTABLE:M=\n r\n\n N:goes on from nothing\n", "Last=M=r\n"},
      {"4.0", "PHOTO:data:image/png;base64\\,aGVsbG8=\n", "Image=hello\n"},
      {"3.0", "PHOTO;VALUE=uri:http://elsewhere/a.png\nPHOTO;ENCODING=b:!\n", ""},
      {"3.0", "BDAY:1980-02-03\nREV:20200101T101112Z\n",
       "Birthday=1980-02-03\nModification=2020-01-01T10:11:12Z\n"},
      {"4.0", "BDAY:--0203\n", "Birthday=--0203\n"},
      {"3.0", "BDAY:1980-02-31\n", "Birthday=1980-02-31\n"},
      {"3.0", "X-MAIDENNAME:Roe\nX-AIM;type=WORK;type=pref:a\nX-JABBER;type=HOME:j\n",
       "AIMInstant=[AIM work!: a]\nJabberInstant=[Jabber home: j]\nMaidenName=Roe\n"},
      // mistakes of others cost only themselves
      {"3.0", "no colon\n:\n;:\n.x\n=;=:\nTEL;\nTEL;TYPE=\"open:1\nTITLE:\nNICKNAME:Al\n",
       "Nickname=Al\nPhone=[open: 1]\n"},
      {"2.1", "AGENT:\nBEGIN:VCARD\nN:Inner\nEND:VCARD\nN:Outer\n", "Last=Outer\n"},
  };
  for (const auto& one : cases) {
    for (const char* lineEnd : {"\r\n", "\n"}) {
      const std::string text = card(one.lines, one.version, lineEnd);
      EXPECT_EQ(described(personOfCard(text)), one.expected) << text;
    }
  }
  EXPECT_EQ(described(personOfCard(card("N:Mac\nNOTE:a\n b\n", "3.0", "\r"))),
            "Last=Mac\nNote=ab\n");
}

TEST(VCardReader, findsCardsAndGroups) {
  const std::string one = card("UID:1\nCATEGORIES:Friends, a\\,b ,,Friends\nitem1.CATEGORIES:c\n");
  EXPECT_EQ(categoriesOfCard(one), (std::vector<std::string>{"Friends", "a,b", "c"}));
  const std::string two = card("AGENT:\nBEGIN:VCARD\nEND:VCARD\n", "2.1", "\n");
  const std::string text = "\xEF\xBB\xBF" + one + "rubbish\n" + two + "END:VCARD\nbegin:vcard\n";
  EXPECT_EQ(cardsIn(text), (std::vector<std::string_view>{one, two}));
  EXPECT_EQ(linesOfCard("BEGIN:VCARD\n goes on\nEND:VCARD\n").front().value, "VCARD");
  EXPECT_EQ(personOfCard(one).uniqueId, "1");
  EXPECT_FALSE(isPersonsCard(linesOfCard(card("KIND:group\n", "4.0"))));
  EXPECT_TRUE(isPersonsCard(linesOfCard(card("KIND:org\n", "4.0"))));
}

ABMultiValueEntry entry(const char* value, const char* label, bool isPrimary = false) {
  return {value, label, "", isPrimary};
}

TEST(VCardEditor, changesOnlyWhatChanges) {
  const struct {
    const char* version;
    const char* before;
    ABChanges changes;
    const char* after;
  } cases[] = {
      {"3.0",
       "X-A;Y=\"z\":1\nN:Lee;Ann,B;;;\nFN:Ann Lee\nnote:long\n  line\nX-B:2\n",
       {{"Last", "L;e"}},
       "X-A;Y=\"z\":1\nN:L\\;e;Ann,B;;;\nFN:Ann\\,B L\\;e\nnote:long\n  line\nX-B:2\n"},
      {"3.0",
       "N:Lee;Ann\nFN:x\nREV:1\n",
       {{"Last", "Lee"}, {"First", "Ann"}, {"Note", {}}},
       "N:Lee;Ann\nFN:x\nREV:1\n"},
      {"4.0", "FN:Ann\n", {{"Last", "Lee"}}, "FN:Ann Lee\nN:Lee;Ann;;;\n"},
      {"3.0",
       "N:;;;;\nFN:Acme\nORG:Acme;Lab;Deep\n",
       {{"Organization", {}}, {"Department", "X"}},
       "N:;;;;\nFN:\nORG:;X;Deep\n"},
      {"3.0",
       "TEL;TYPE=X-ODD;TYPE=WORK:1\nEMAIL:a@b\nitem1.TEL:2\nitem1.X-ABLabel:boat\n",
       {{"Phone", ABMultiValue{entry("3", "phone mobile", true), entry("1", "phone work")}}},
       "TEL;TYPE=CELL;TYPE=PREF:3\nTEL;TYPE=X-ODD;TYPE=WORK:1\nEMAIL:a@b\n"},
      {"3.0",
       "item1.X-FOO:1\n",
       {{"Phone", ABMultiValue{entry("3", "boat")}}},
       "item1.X-FOO:1\nitem2.TEL:3\nitem2.X-ABLabel:boat\n"},
      {"4.0",
       "EMAIL:a@b\n",
       {{"Email", ABMultiValue{entry("c@d", "e-mail work", true)}}},
       "EMAIL;TYPE=WORK;PREF=1:c@d\n"},
      {"4.0",
       "TITLE:x\n",
       {{"JobTitle", {}}, {"Image", "GIF8"}},
       "PHOTO:data:image/gif;base64,R0lGOA==\n"},
      {"3.0", "PHOTO;ENCODING=b:aGVs\n bG8=\nX:y\n", {{"Image", {}}}, "X:y\n"},
      {"2.1",
       "TITLE:x\n",
       {{"JobTitle", "Z\u00F6e;\n="}, {"Image", "hello"}},
       "TITLE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Z=C3=B6e\\;=0D=0A=3D\n"
       "PHOTO;ENCODING=BASE64;JPEG:aGVsbG8=\n\n"},
      {"3.0",
       "BDAY;VALUE=date:19800203\n",
       {{"Birthday", dateOfText("1980-02-03")}},
       "BDAY;VALUE=date:19800203\n"},
      {"3.0", "BDAY:1980-02-03\n", {{"Birthday", dateOfText("1980-02-04")}}, "BDAY:1980-02-04\n"},
      {"3.0",
       "",
       {{"Address", ABMultiValue{entry(";;Main\\; St, 1;Town;;1;", "address home")}}},
       "ADR;TYPE=HOME:;;Main\\; St\\, 1;Town;;1;\n"},
  };
  for (const auto& one : cases) {
    for (const char* lineEnd : {"\r\n", "\n"}) {
      const std::string after = card(one.after, one.version, lineEnd);
      EXPECT_EQ(cardWithChanges(card(one.before, one.version, lineEnd), one.changes), after);
      EXPECT_EQ(cardWithChanges(after, one.changes), after);
    }
  }
}

TEST(VCardReader, isNotHeldUpByLinesThatGoOnForEver) {
  std::string lines = "A=\n";
  for (int count = 0; count < 200'000; ++count) lines += " =\n";  // minutes, if each looked at all
  EXPECT_TRUE(personOfCard(card(lines + "NOTE:x\n")).value("Note"));
  EXPECT_EQ(escapedValue(std::string("a\0b", 3)), "ab");
}

TEST(VCardEditor, foldsBetweenCharacters) {
  std::string note;
  for (int count = 0; count < 100; ++count) note += "\u20AC";
  const std::string text = cardWithChanges(card(""), {{"Note", note}});
  EXPECT_EQ(std::get<std::string>(*personOfCard(text).value("Note")), note);
  for (std::size_t at = text.find("\r\n "); at != text.npos; at = text.find("\r\n ", at + 1)) {
    EXPECT_TRUE(at > 0 && (text[at + 3] & 0xC0) != 0x80) << text;
  }
}

TEST(VCardEditor, putsCardsIntoGroups) {
  const struct {
    const char* before;
    const char* category;
    const char* with;
    const char* without;
  } cases[] = {
      {"X:1\n", "a,b", "X:1\nCATEGORIES:a\\,b\n", "X:1\n"},
      {"CATEGORIES:c, d\nX:1\n", "d", "CATEGORIES:c, d\nX:1\n", "CATEGORIES:c\nX:1\n"},
      {"i.CATEGORIES:c\nCATEGORIES:d\n", "d", "i.CATEGORIES:c\nCATEGORIES:d\n", "i.CATEGORIES:c\n"},
      {"CATEGORIES:c\n", "d", "CATEGORIES:c,d\n", "CATEGORIES:c\n"},
      {"X;ENCODING=QUOTED-PRINTABLE:a=\n", "d", "X;ENCODING=QUOTED-PRINTABLE:a=\n\nCATEGORIES:d\n",
       "X;ENCODING=QUOTED-PRINTABLE:a=\n\n"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(cardInCategory(card(one.before), one.category), card(one.with));
    EXPECT_EQ(cardNotInCategory(card(one.with), one.category), card(one.without));
    EXPECT_EQ(cardNotInCategory(card(one.before), "other"), card(one.before));
  }
  EXPECT_EQ(cardInNoCategory(card(cases[2].before)), card(""));
  EXPECT_EQ(cardWithUid(card("UID:1\nX:y\n"), "2"), card("UID:2\nX:y\n"));
  EXPECT_EQ(cardInCategory("no card", "a"), "no card");
}

}  // namespace
}  // namespace zolvar
