// The languages: those of the library, then all others that have a standard code and an English
// name, after the Common Locale Data Repository. Xhosa has its three-letter code, since its "xh" is
// the library's short form of Chinese.
#include "programs/common/languages.h"

#include <algorithm>

#include "klib.h"

namespace klib::programs {
namespace {

struct LibraryLanguage {
  std::string_view name, short_form;
  std::string_view codes[3];  // of two letters, of three, and the older one of three
};

// clang-format off
constexpr LibraryLanguage library_languages[] = {
    {"GERMAN",     "DE", {"de", "deu", "ger"}},
    {"ENGLISH",    "EN", {"en", "eng"}},
    {"SPANISH",    "ES", {"es", "spa"}},
    {"DUTCH",      "NL", {"nl", "nld", "dut"}},
    {"FRENCH",     "FR", {"fr", "fra", "fre"}},
    {"DANISH",     "DA", {"da", "dan"}},
    {"ITALIAN",    "IT", {"it", "ita"}},
    {"ARABIC",     "AR", {"ar", "ara"}},
    {"RUSSIAN",    "RU", {"ru", "rus"}},
    {"CATALAN",    "CA", {"ca", "cat"}},
    {"PORTUGUESE", "PT", {"pt", "por"}},
    {"GREEK",      "EL", {"el", "ell", "gre"}},
    {"FINNISH",    "FI", {"fi", "fin"}},
    {"SWEDISH",    "SV", {"sv", "swe"}},
    {"CHINESE",    "XH", {"zh", "zho", "chi"}},
    {"KOREAN",     "KO", {"ko", "kor"}},
    {"JAPANESE",   "JP", {"ja", "jpn"}},
    {"HUNGARIAN",  "HU", {"hu", "hun"}},
};

struct OtherLanguage {
  char code[4], three_letters[4];  // the latter where the code has two
  char name[28];                   // in its place: hundreds of addresses would slow every start
};

constexpr OtherLanguage other_languages[] = {
    {"aa", "aar", "Afar"}, {"ab", "abk", "Abkhazian"}, {"ace", "", "Achinese"},
    {"ach", "", "Acoli"}, {"ada", "", "Adangme"}, {"ady", "", "Adyghe"}, {"ae", "ave", "Avestan"},
    {"aeb", "", "Tunisian Arabic"}, {"af", "afr", "Afrikaans"}, {"afh", "", "Afrihili"},
    {"agq", "", "Aghem"}, {"ain", "", "Ainu"}, {"ak", "aka", "Akan"}, {"akk", "", "Akkadian"},
    {"akz", "", "Alabama"}, {"ale", "", "Aleut"}, {"aln", "", "Gheg Albanian"},
    {"alt", "", "Southern Altai"}, {"am", "amh", "Amharic"}, {"an", "arg", "Aragonese"},
    {"ang", "", "Old English"}, {"anp", "", "Angika"}, {"arc", "", "Aramaic"},
    {"arn", "", "Mapuche"}, {"aro", "", "Araona"}, {"arp", "", "Arapaho"},
    {"arq", "", "Algerian Arabic"}, {"ars", "", "Najdi Arabic"}, {"arw", "", "Arawak"},
    {"ary", "", "Moroccan Arabic"}, {"arz", "", "Egyptian Arabic"}, {"as", "asm", "Assamese"},
    {"asa", "", "Asu"}, {"ase", "", "American Sign Language"}, {"ast", "", "Asturian"},
    {"av", "ava", "Avaric"}, {"avk", "", "Kotava"}, {"awa", "", "Awadhi"}, {"ay", "aym", "Aymara"},
    {"az", "aze", "Azerbaijani"}, {"ba", "bak", "Bashkir"}, {"bal", "", "Baluchi"},
    {"ban", "", "Balinese"}, {"bar", "", "Bavarian"}, {"bas", "", "Basaa"}, {"bax", "", "Bamun"},
    {"bbc", "", "Batak Toba"}, {"bbj", "", "Ghomala"}, {"be", "bel", "Belarusian"},
    {"bej", "", "Beja"}, {"bem", "", "Bemba"}, {"bew", "", "Betawi"}, {"bez", "", "Bena"},
    {"bfd", "", "Bafut"}, {"bfq", "", "Badaga"}, {"bg", "bul", "Bulgarian"},
    {"bgc", "", "Haryanvi"}, {"bgn", "", "Western Balochi"}, {"bho", "", "Bhojpuri"},
    {"bi", "bis", "Bislama"}, {"bik", "", "Bikol"}, {"bin", "", "Bini"}, {"bjn", "", "Banjar"},
    {"bkm", "", "Kom"}, {"bla", "", "Siksiká"}, {"bm", "bam", "Bambara"}, {"bn", "ben", "Bangla"},
    {"bo", "bod", "Tibetan"}, {"bpy", "", "Bishnupriya"}, {"bqi", "", "Bakhtiari"},
    {"br", "bre", "Breton"}, {"bra", "", "Braj"}, {"brh", "", "Brahui"}, {"brx", "", "Bodo"},
    {"bs", "bos", "Bosnian"}, {"bss", "", "Akoose"}, {"bua", "", "Buriat"}, {"bug", "", "Buginese"},
    {"bum", "", "Bulu"}, {"byn", "", "Blin"}, {"byv", "", "Medumba"}, {"cad", "", "Caddo"},
    {"car", "", "Carib"}, {"cay", "", "Cayuga"}, {"cch", "", "Atsam"}, {"ccp", "", "Chakma"},
    {"ce", "che", "Chechen"}, {"ceb", "", "Cebuano"}, {"cgg", "", "Chiga"},
    {"ch", "cha", "Chamorro"}, {"chb", "", "Chibcha"}, {"chg", "", "Chagatai"},
    {"chk", "", "Chuukese"}, {"chm", "", "Mari"}, {"chn", "", "Chinook Jargon"},
    {"cho", "", "Choctaw"}, {"chp", "", "Chipewyan"}, {"chr", "", "Cherokee"},
    {"chy", "", "Cheyenne"}, {"ckb", "", "Central Kurdish"}, {"co", "cos", "Corsican"},
    {"cop", "", "Coptic"}, {"cps", "", "Capiznon"}, {"cr", "cre", "Cree"},
    {"crh", "", "Crimean Tatar"}, {"cs", "ces", "Czech"}, {"csb", "", "Kashubian"},
    {"cu", "chu", "Church Slavic"}, {"cv", "chv", "Chuvash"}, {"cy", "cym", "Welsh"},
    {"dak", "", "Dakota"}, {"dar", "", "Dargwa"}, {"dav", "", "Taita"}, {"del", "", "Delaware"},
    {"den", "", "Slave"}, {"dgr", "", "Dogrib"}, {"din", "", "Dinka"}, {"dje", "", "Zarma"},
    {"doi", "", "Dogri"}, {"dsb", "", "Lower Sorbian"}, {"dtp", "", "Central Dusun"},
    {"dua", "", "Duala"}, {"dum", "", "Middle Dutch"}, {"dv", "div", "Divehi"},
    {"dyo", "", "Jola-Fonyi"}, {"dyu", "", "Dyula"}, {"dz", "dzo", "Dzongkha"},
    {"dzg", "", "Dazaga"}, {"ebu", "", "Embu"}, {"ee", "ewe", "Ewe"}, {"efi", "", "Efik"},
    {"egl", "", "Emilian"}, {"egy", "", "Ancient Egyptian"}, {"eka", "", "Ekajuk"},
    {"elx", "", "Elamite"}, {"enm", "", "Middle English"}, {"eo", "epo", "Esperanto"},
    {"esu", "", "Central Yupik"}, {"et", "est", "Estonian"}, {"eu", "eus", "Basque"},
    {"ewo", "", "Ewondo"}, {"ext", "", "Extremaduran"}, {"fa", "fas", "Persian"},
    {"fan", "", "Fang"}, {"fat", "", "Fanti"}, {"ff", "ful", "Fula"}, {"fil", "", "Filipino"},
    {"fit", "", "Tornedalen Finnish"}, {"fj", "fij", "Fijian"}, {"fo", "fao", "Faroese"},
    {"fon", "", "Fon"}, {"frc", "", "Cajun French"}, {"frm", "", "Middle French"},
    {"fro", "", "Old French"}, {"frp", "", "Arpitan"}, {"frr", "", "Northern Frisian"},
    {"frs", "", "Eastern Frisian"}, {"fur", "", "Friulian"}, {"fy", "fry", "Western Frisian"},
    {"ga", "gle", "Irish"}, {"gaa", "", "Ga"}, {"gag", "", "Gagauz"}, {"gan", "", "Gan Chinese"},
    {"gay", "", "Gayo"}, {"gba", "", "Gbaya"}, {"gbz", "", "Zoroastrian Dari"},
    {"gd", "gla", "Scottish Gaelic"}, {"gez", "", "Geez"}, {"gil", "", "Gilbertese"},
    {"gl", "glg", "Galician"}, {"glk", "", "Gilaki"}, {"gmh", "", "Middle High German"},
    {"gn", "grn", "Guarani"}, {"goh", "", "Old High German"}, {"gom", "", "Goan Konkani"},
    {"gon", "", "Gondi"}, {"gor", "", "Gorontalo"}, {"got", "", "Gothic"}, {"grb", "", "Grebo"},
    {"grc", "", "Ancient Greek"}, {"gsw", "", "Swiss German"}, {"gu", "guj", "Gujarati"},
    {"guc", "", "Wayuu"}, {"gur", "", "Frafra"}, {"guz", "", "Gusii"}, {"gv", "glv", "Manx"},
    {"gwi", "", "Gwichʼin"}, {"ha", "hau", "Hausa"}, {"hai", "", "Haida"},
    {"hak", "", "Hakka Chinese"}, {"haw", "", "Hawaiian"}, {"he", "heb", "Hebrew"},
    {"hi", "hin", "Hindi"}, {"hif", "", "Fiji Hindi"}, {"hil", "", "Hiligaynon"},
    {"hit", "", "Hittite"}, {"hmn", "", "Hmong"}, {"ho", "hmo", "Hiri Motu"},
    {"hr", "hrv", "Croatian"}, {"hsb", "", "Upper Sorbian"}, {"hsn", "", "Xiang Chinese"},
    {"ht", "hat", "Haitian Creole"}, {"hup", "", "Hupa"}, {"hy", "hye", "Armenian"},
    {"hz", "her", "Herero"}, {"ia", "ina", "Interlingua"}, {"iba", "", "Iban"},
    {"ibb", "", "Ibibio"}, {"id", "ind", "Indonesian"}, {"ie", "ile", "Interlingue"},
    {"ig", "ibo", "Igbo"}, {"ii", "iii", "Sichuan Yi"}, {"ik", "ipk", "Inupiaq"},
    {"ilo", "", "Iloko"}, {"inh", "", "Ingush"}, {"io", "ido", "Ido"}, {"is", "isl", "Icelandic"},
    {"iu", "iku", "Inuktitut"}, {"izh", "", "Ingrian"}, {"jam", "", "Jamaican Creole English"},
    {"jbo", "", "Lojban"}, {"jgo", "", "Ngomba"}, {"jmc", "", "Machame"},
    {"jpr", "", "Judeo-Persian"}, {"jrb", "", "Judeo-Arabic"}, {"jut", "", "Jutish"},
    {"jv", "jav", "Javanese"}, {"ka", "kat", "Georgian"}, {"kaa", "", "Kara-Kalpak"},
    {"kab", "", "Kabyle"}, {"kac", "", "Kachin"}, {"kaj", "", "Jju"}, {"kam", "", "Kamba"},
    {"kaw", "", "Kawi"}, {"kbd", "", "Kabardian"}, {"kbl", "", "Kanembu"}, {"kcg", "", "Tyap"},
    {"kde", "", "Makonde"}, {"kea", "", "Kabuverdianu"}, {"ken", "", "Kenyang"},
    {"kfo", "", "Koro"}, {"kg", "kon", "Kongo"}, {"kgp", "", "Kaingang"}, {"kha", "", "Khasi"},
    {"kho", "", "Khotanese"}, {"khq", "", "Koyra Chiini"}, {"khw", "", "Khowar"},
    {"ki", "kik", "Kikuyu"}, {"kiu", "", "Kirmanjki"}, {"kj", "kua", "Kuanyama"},
    {"kk", "kaz", "Kazakh"}, {"kkj", "", "Kako"}, {"kl", "kal", "Kalaallisut"},
    {"kln", "", "Kalenjin"}, {"km", "khm", "Khmer"}, {"kmb", "", "Kimbundu"},
    {"kn", "kan", "Kannada"}, {"koi", "", "Komi-Permyak"}, {"kok", "", "Konkani"},
    {"kos", "", "Kosraean"}, {"kpe", "", "Kpelle"}, {"kr", "kau", "Kanuri"},
    {"krc", "", "Karachay-Balkar"}, {"kri", "", "Krio"}, {"krj", "", "Kinaray-a"},
    {"krl", "", "Karelian"}, {"kru", "", "Kurukh"}, {"ks", "kas", "Kashmiri"},
    {"ksb", "", "Shambala"}, {"ksf", "", "Bafia"}, {"ksh", "", "Colognian"},
    {"ku", "kur", "Kurdish"}, {"kum", "", "Kumyk"}, {"kut", "", "Kutenai"}, {"kv", "kom", "Komi"},
    {"kw", "cor", "Cornish"}, {"ky", "kir", "Kyrgyz"}, {"la", "lat", "Latin"},
    {"lad", "", "Ladino"}, {"lag", "", "Langi"}, {"lah", "", "Western Panjabi"},
    {"lam", "", "Lamba"}, {"lb", "ltz", "Luxembourgish"}, {"lez", "", "Lezghian"},
    {"lfn", "", "Lingua Franca Nova"}, {"lg", "lug", "Ganda"}, {"li", "lim", "Limburgish"},
    {"lij", "", "Ligurian"}, {"liv", "", "Livonian"}, {"lkt", "", "Lakota"}, {"lmo", "", "Lombard"},
    {"ln", "lin", "Lingala"}, {"lo", "lao", "Lao"}, {"lol", "", "Mongo"}, {"loz", "", "Lozi"},
    {"lrc", "", "Northern Luri"}, {"lt", "lit", "Lithuanian"}, {"ltg", "", "Latgalian"},
    {"lu", "lub", "Luba-Katanga"}, {"lua", "", "Luba-Lulua"}, {"lui", "", "Luiseno"},
    {"lun", "", "Lunda"}, {"luo", "", "Luo"}, {"lus", "", "Mizo"}, {"luy", "", "Luyia"},
    {"lv", "lav", "Latvian"}, {"lzh", "", "Literary Chinese"}, {"lzz", "", "Laz"},
    {"mad", "", "Madurese"}, {"maf", "", "Mafa"}, {"mag", "", "Magahi"}, {"mai", "", "Maithili"},
    {"mak", "", "Makasar"}, {"man", "", "Mandingo"}, {"mas", "", "Masai"}, {"mde", "", "Maba"},
    {"mdf", "", "Moksha"}, {"mdr", "", "Mandar"}, {"men", "", "Mende"}, {"mer", "", "Meru"},
    {"mfe", "", "Morisyen"}, {"mg", "mlg", "Malagasy"}, {"mga", "", "Middle Irish"},
    {"mgh", "", "Makhuwa-Meetto"}, {"mgo", "", "Metaʼ"}, {"mh", "mah", "Marshallese"},
    {"mi", "mri", "Māori"}, {"mic", "", "Mi'kmaq"}, {"min", "", "Minangkabau"},
    {"mk", "mkd", "Macedonian"}, {"ml", "mal", "Malayalam"}, {"mn", "mon", "Mongolian"},
    {"mnc", "", "Manchu"}, {"mni", "", "Manipuri"}, {"moh", "", "Mohawk"}, {"mos", "", "Mossi"},
    {"mr", "mar", "Marathi"}, {"mrj", "", "Western Mari"}, {"ms", "msa", "Malay"},
    {"mt", "mlt", "Maltese"}, {"mua", "", "Mundang"}, {"mul", "", "Multiple languages"},
    {"mus", "", "Muscogee"}, {"mwl", "", "Mirandese"}, {"mwr", "", "Marwari"},
    {"mwv", "", "Mentawai"}, {"my", "mya", "Burmese"}, {"mye", "", "Myene"}, {"myv", "", "Erzya"},
    {"mzn", "", "Mazanderani"}, {"na", "nau", "Nauru"}, {"nan", "", "Min Nan Chinese"},
    {"nap", "", "Neapolitan"}, {"naq", "", "Nama"}, {"nb", "nob", "Norwegian Bokmål"},
    {"nd", "nde", "North Ndebele"}, {"nds", "", "Low German"}, {"ne", "nep", "Nepali"},
    {"new", "", "Newari"}, {"ng", "ndo", "Ndonga"}, {"nia", "", "Nias"}, {"niu", "", "Niuean"},
    {"njo", "", "Ao Naga"}, {"nmg", "", "Kwasio"}, {"nn", "nno", "Norwegian Nynorsk"},
    {"nnh", "", "Ngiemboon"}, {"no", "nor", "Norwegian"}, {"nog", "", "Nogai"},
    {"non", "", "Old Norse"}, {"nov", "", "Novial"}, {"nqo", "", "N’Ko"},
    {"nr", "nbl", "South Ndebele"}, {"nso", "", "Northern Sotho"}, {"nus", "", "Nuer"},
    {"nv", "nav", "Navajo"}, {"nwc", "", "Classical Newari"}, {"ny", "nya", "Nyanja"},
    {"nym", "", "Nyamwezi"}, {"nyn", "", "Nyankole"}, {"nyo", "", "Nyoro"}, {"nzi", "", "Nzima"},
    {"oc", "oci", "Occitan"}, {"oj", "oji", "Ojibwa"}, {"om", "orm", "Oromo"},
    {"or", "ori", "Odia"}, {"os", "oss", "Ossetic"}, {"osa", "", "Osage"},
    {"ota", "", "Ottoman Turkish"}, {"pa", "pan", "Punjabi"}, {"pag", "", "Pangasinan"},
    {"pal", "", "Pahlavi"}, {"pam", "", "Pampanga"}, {"pap", "", "Papiamento"},
    {"pau", "", "Palauan"}, {"pcd", "", "Picard"}, {"pcm", "", "Nigerian Pidgin"},
    {"pdc", "", "Pennsylvania German"}, {"pdt", "", "Plautdietsch"}, {"peo", "", "Old Persian"},
    {"pfl", "", "Palatine German"}, {"phn", "", "Phoenician"}, {"pi", "pli", "Pali"},
    {"pl", "pol", "Polish"}, {"pms", "", "Piedmontese"}, {"pnt", "", "Pontic"},
    {"pon", "", "Pohnpeian"}, {"prg", "", "Prussian"}, {"pro", "", "Old Provençal"},
    {"ps", "pus", "Pashto"}, {"qu", "que", "Quechua"}, {"quc", "", "Kʼicheʼ"},
    {"qug", "", "Chimborazo Highland Quichua"}, {"raj", "", "Rajasthani"}, {"rap", "", "Rapanui"},
    {"rar", "", "Rarotongan"}, {"rgn", "", "Romagnol"}, {"rif", "", "Riffian"},
    {"rm", "roh", "Romansh"}, {"rn", "run", "Rundi"}, {"ro", "ron", "Romanian"},
    {"rof", "", "Rombo"}, {"rom", "", "Romany"}, {"rtm", "", "Rotuman"}, {"rue", "", "Rusyn"},
    {"rug", "", "Roviana"}, {"rup", "", "Aromanian"}, {"rw", "kin", "Kinyarwanda"},
    {"rwk", "", "Rwa"}, {"sa", "san", "Sanskrit"}, {"sad", "", "Sandawe"}, {"sah", "", "Yakut"},
    {"sam", "", "Samaritan Aramaic"}, {"saq", "", "Samburu"}, {"sas", "", "Sasak"},
    {"sat", "", "Santali"}, {"saz", "", "Saurashtra"}, {"sba", "", "Ngambay"}, {"sbp", "", "Sangu"},
    {"sc", "srd", "Sardinian"}, {"scn", "", "Sicilian"}, {"sco", "", "Scots"},
    {"sd", "snd", "Sindhi"}, {"sdc", "", "Sassarese Sardinian"}, {"sdh", "", "Southern Kurdish"},
    {"se", "sme", "Northern Sami"}, {"see", "", "Seneca"}, {"seh", "", "Sena"}, {"sei", "", "Seri"},
    {"sel", "", "Selkup"}, {"ses", "", "Koyraboro Senni"}, {"sg", "sag", "Sango"},
    {"sga", "", "Old Irish"}, {"sgs", "", "Samogitian"}, {"shi", "", "Tachelhit"},
    {"shn", "", "Shan"}, {"shu", "", "Chadian Arabic"}, {"si", "sin", "Sinhala"},
    {"sid", "", "Sidamo"}, {"sk", "slk", "Slovak"}, {"sl", "slv", "Slovenian"},
    {"sli", "", "Lower Silesian"}, {"sly", "", "Selayar"}, {"sm", "smo", "Samoan"},
    {"sma", "", "Southern Sami"}, {"smj", "", "Lule Sami"}, {"smn", "", "Inari Sami"},
    {"sms", "", "Skolt Sami"}, {"sn", "sna", "Shona"}, {"snk", "", "Soninke"},
    {"so", "som", "Somali"}, {"sog", "", "Sogdien"}, {"sq", "sqi", "Albanian"},
    {"sr", "srp", "Serbian"}, {"srn", "", "Sranan Tongo"}, {"srr", "", "Serer"},
    {"ss", "ssw", "Swati"}, {"ssy", "", "Saho"}, {"st", "sot", "Southern Sotho"},
    {"stq", "", "Saterland Frisian"}, {"su", "sun", "Sundanese"}, {"suk", "", "Sukuma"},
    {"sus", "", "Susu"}, {"sux", "", "Sumerian"}, {"sw", "swa", "Swahili"}, {"swb", "", "Comorian"},
    {"syc", "", "Classical Syriac"}, {"syr", "", "Syriac"}, {"szl", "", "Silesian"},
    {"ta", "tam", "Tamil"}, {"tcy", "", "Tulu"}, {"te", "tel", "Telugu"}, {"tem", "", "Timne"},
    {"teo", "", "Teso"}, {"ter", "", "Tereno"}, {"tet", "", "Tetum"}, {"tg", "tgk", "Tajik"},
    {"th", "tha", "Thai"}, {"ti", "tir", "Tigrinya"}, {"tig", "", "Tigre"}, {"tiv", "", "Tiv"},
    {"tk", "tuk", "Turkmen"}, {"tkl", "", "Tokelau"}, {"tkr", "", "Tsakhur"},
    {"tlh", "", "Klingon"}, {"tli", "", "Tlingit"}, {"tly", "", "Talysh"}, {"tmh", "", "Tamashek"},
    {"tn", "tsn", "Tswana"}, {"to", "ton", "Tongan"}, {"tog", "", "Nyasa Tonga"},
    {"tpi", "", "Tok Pisin"}, {"tr", "tur", "Turkish"}, {"tru", "", "Turoyo"},
    {"trv", "", "Taroko"}, {"ts", "tso", "Tsonga"}, {"tsd", "", "Tsakonian"},
    {"tsi", "", "Tsimshian"}, {"tt", "tat", "Tatar"}, {"ttt", "", "Muslim Tat"},
    {"tum", "", "Tumbuka"}, {"tvl", "", "Tuvalu"}, {"tw", "twi", "Twi"}, {"twq", "", "Tasawaq"},
    {"ty", "tah", "Tahitian"}, {"tyv", "", "Tuvinian"}, {"tzm", "", "Central Atlas Tamazight"},
    {"udm", "", "Udmurt"}, {"ug", "uig", "Uyghur"}, {"uga", "", "Ugaritic"},
    {"uk", "ukr", "Ukrainian"}, {"umb", "", "Umbundu"}, {"und", "", "Unknown language"},
    {"ur", "urd", "Urdu"}, {"uz", "uzb", "Uzbek"}, {"vai", "", "Vai"}, {"ve", "ven", "Venda"},
    {"vec", "", "Venetian"}, {"vep", "", "Veps"}, {"vi", "vie", "Vietnamese"},
    {"vls", "", "West Flemish"}, {"vmf", "", "Main-Franconian"}, {"vo", "vol", "Volapük"},
    {"vot", "", "Votic"}, {"vro", "", "Võro"}, {"vun", "", "Vunjo"}, {"wa", "wln", "Walloon"},
    {"wae", "", "Walser"}, {"wal", "", "Wolaytta"}, {"war", "", "Waray"}, {"was", "", "Washo"},
    {"wbp", "", "Warlpiri"}, {"wo", "wol", "Wolof"}, {"wuu", "", "Wu Chinese"},
    {"xal", "", "Kalmyk"}, {"xho", "", "Xhosa"}, {"xmf", "", "Mingrelian"}, {"xog", "", "Soga"},
    {"yao", "", "Yao"}, {"yap", "", "Yapese"}, {"yav", "", "Yangben"}, {"ybb", "", "Yemba"},
    {"yi", "yid", "Yiddish"}, {"yo", "yor", "Yoruba"}, {"yrl", "", "Nheengatu"},
    {"yue", "", "Cantonese"}, {"za", "zha", "Zhuang"}, {"zap", "", "Zapotec"},
    {"zbl", "", "Blissymbols"}, {"zea", "", "Zeelandic"}, {"zen", "", "Zenaga"},
    {"zgh", "", "Standard Moroccan Tamazight"}, {"zu", "zul", "Zulu"}, {"zun", "", "Zuni"},
    {"zxx", "", "No linguistic content"}, {"zza", "", "Zaza"},
};
// clang-format on

// Those that are written from right to left, also after that repository.
constexpr std::string_view right_to_left =
    " ae aeb ar arc arq ars ary arz bal bej bgn bqi brh ckb dv fa gbz glk grc he khw ks lad lah lrc"
    " mde mzn nqo ota pal phn ps sd sdh shu sog swb syr ug ur yi ";

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool is_same(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, lower, lower);
}

// The language of a code without region, or an empty text.
std::string language_of_code(std::string_view code) {
  for (const LibraryLanguage &row : library_languages)
    for (const std::string_view known : row.codes)
      if (!known.empty() && is_same(code, known)) return std::string(row.name);
  for (const OtherLanguage &row : other_languages)
    if (is_same(code, row.code) ||
        (row.three_letters[0] != '\0' && is_same(code, row.three_letters)))
      return row.code;
  return "";
}

// Whether what follows a code looks like its script, region and variants: "-BR", "_Latn_RS".
bool are_subtags(std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find_first_of("-_", 1), text.size());
    const std::string_view tag = text.substr(1, end - 1);
    const auto is_letter_or_digit = [](char c) {
      return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9');
    };
    if (tag.empty() || tag.size() > 8 || !std::ranges::all_of(tag, is_letter_or_digit))
      return false;
    text.remove_prefix(end);
  }
  return true;
}

}  // namespace

std::string language_name(std::string_view given) {
  for (const LibraryLanguage &row : library_languages)
    if (is_same(given, row.name) || is_same(given, row.short_form)) return std::string(row.name);
  for (const OtherLanguage &row : other_languages)
    if (is_same(given, row.name)) return row.code;
  const size_t end = std::min(given.find_first_of("-_"), given.size());
  return are_subtags(given.substr(end)) ? language_of_code(given.substr(0, end)) : "";
}

std::string language_code(std::string_view name) {
  for (const LibraryLanguage &row : library_languages)
    if (row.name == name) return std::string(row.codes[0]);
  return std::string(name);
}

bool is_right_to_left(std::string_view name) {
  return right_to_left.find(' ' + language_code(name) + ' ') != right_to_left.npos;
}

std::string list_of_languages() {
  std::string list, line;
  for (const LibraryLanguage &row : library_languages) {
    std::string one(row.name);
    one.append(" (").append(row.short_form);
    if (!is_same(row.short_form, row.codes[0])) one.append(", ").append(row.codes[0]);
    one += ")";
    if (line.size() + one.size() + 5 > 80)
      list.append("  ").append(line).append("\n"), line.clear();
    line.append(line.empty() ? "" : " ").append(one).append(",");
  }
  line.back() = ';';
  return list.append("  ").append(line).append(
      "\n  or the English name or standard code of any other, such as Czech or cs,\n"
      "  which is treated as Western.\n");
}

}  // namespace klib::programs
