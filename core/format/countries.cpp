#include "core/format/countries.h"

#include "core/format/words.h"

namespace core {
namespace {

// ISO 3166-1, alpha-2.
constexpr std::string_view kIso =
    "AD|AE|AF|AG|AI|AL|AM|AO|AQ|AR|AS|AT|AU|AW|AX|AZ|BA|BB|BD|BE|BF|BG|BH|BI|BJ|BL|BM|BN|"
    "BO|BQ|BR|BS|BT|BV|BW|BY|BZ|CA|CC|CD|CF|CG|CH|CI|CK|CL|CM|CN|CO|CR|CU|CV|CW|CX|CY|CZ|"
    "DE|DJ|DK|DM|DO|DZ|EC|EE|EG|EH|ER|ES|ET|FI|FJ|FK|FM|FO|FR|GA|GB|GD|GE|GF|GG|GH|GI|GL|"
    "GM|GN|GP|GQ|GR|GS|GT|GU|GW|GY|HK|HM|HN|HR|HT|HU|ID|IE|IL|IM|IN|IO|IQ|IR|IS|IT|JE|JM|"
    "JO|JP|KE|KG|KH|KI|KM|KN|KP|KR|KW|KY|KZ|LA|LB|LC|LI|LK|LR|LS|LT|LU|LV|LY|MA|MC|MD|ME|"
    "MF|MG|MH|MK|ML|MM|MN|MO|MP|MQ|MR|MS|MT|MU|MV|MW|MX|MY|MZ|NA|NC|NE|NF|NG|NI|NL|NO|NP|"
    "NR|NU|NZ|OM|PA|PE|PF|PG|PH|PK|PL|PM|PN|PR|PS|PT|PW|PY|QA|RE|RO|RS|RU|RW|SA|SB|SC|SD|"
    "SE|SG|SH|SI|SJ|SK|SL|SM|SN|SO|SR|SS|ST|SV|SX|SY|SZ|TC|TD|TF|TG|TH|TJ|TK|TL|TM|TN|TO|"
    "TR|TT|TV|TW|TZ|UA|UG|UM|US|UY|UZ|VA|VC|VE|VG|VI|VN|VU|WF|WS|XK|YE|YT|ZA|ZM|ZW";

// FIPS PUB 10-4.
constexpr std::string_view kFips =
    "AA|AC|AF|AG|AJ|AL|AM|AN|AO|AQ|AR|AS|AT|AU|AV|AX|AY|BA|BB|BC|BD|BE|BF|BG|BH|BK|BL|BM|"
    "BN|BO|BP|BQ|BR|BS|BT|BU|BV|BX|BY|CA|CB|CD|CE|CF|CG|CH|CI|CJ|CK|CM|CN|CO|CQ|CR|CS|CT|"
    "CU|CV|CW|CY|DA|DJ|DO|DR|DX|EC|EG|EI|EK|EN|ER|ES|ET|EU|EZ|FG|FI|FJ|FK|FM|FO|FP|FQ|FR|"
    "FS|GA|GB|GG|GH|GI|GJ|GK|GL|GM|GO|GP|GQ|GR|GT|GV|GY|GZ|HA|HK|HM|HO|HQ|HR|HU|IC|ID|IM|"
    "IN|IO|IP|IR|IS|IT|IV|IZ|JA|JE|JM|JN|JO|JQ|JU|KE|KG|KN|KQ|KR|KS|KT|KU|KV|KZ|LA|LE|LG|"
    "LH|LI|LO|LQ|LS|LT|LU|LY|MA|MB|MC|MD|MF|MG|MH|MI|MJ|MK|ML|MN|MO|MP|MQ|MR|MT|MU|MV|MX|"
    "MY|MZ|NC|NE|NF|NG|NH|NI|NL|NN|NO|NP|NR|NS|NT|NU|NZ|OD|PA|PC|PE|PF|PG|PK|PL|PM|PO|PP|"
    "PS|PU|QA|RE|RI|RM|RN|RO|RP|RQ|RS|RW|SA|SB|SC|SE|SF|SG|SH|SI|SL|SM|SN|SO|SP|ST|SU|SV|"
    "SW|SX|SY|SZ|TB|TD|TE|TH|TI|TK|TL|TN|TO|TP|TS|TT|TU|TV|TW|TX|TZ|UC|UG|UK|UP|US|UV|UY|"
    "UZ|VC|VE|VI|VM|VQ|VT|WA|WE|WF|WI|WQ|WS|WZ|YM|ZA|ZI";

// Alliances and other bodies that classify.
constexpr std::string_view kOthers = "XN|XX|EU|UN";

}  // namespace

bool IsCountry(std::string_view code) {
  return code.size() == 2 && (IsOneOf(code, kIso) || IsOneOf(code, kFips) || IsOneOf(code, kOthers));
}

}  // namespace core
