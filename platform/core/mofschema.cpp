// SPDX-License-Identifier: Apache-2.0
#include "mofschema.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_map>
#include <utility>

#include "asciitext.h"
#include "mofdocument.h"

namespace NKRXVEL20::mof {
namespace {

using host::ClassSchema;
using host::PropertySchema;
using host::Qualifier;
using host::QualifierDeclaration;
using host::TextList;

// So that a small text cannot make a large schema, nor a slow one.
constexpr std::size_t kMostQualifierDeclarations = 64;
constexpr std::size_t kMostPropertiesOfAClass = 256;  // inherited ones counted
constexpr std::size_t kMostProperties = 65536;        // of all classes, inherited ones counted
constexpr std::size_t kMostSuperclasses = 16;         // of one class

// What a schema's texts and lists lie in.
struct Store {
  explicit Store(Source texts) : source(std::move(texts)) {}

  Source source;
  std::string decoded;  // strings that were not said in one piece
  std::vector<std::string_view> values;
  std::vector<QualifierDeclaration> declarations;
  std::vector<Qualifier> qualifiers;
  std::vector<std::vector<PropertySchema>> properties;  // of each class
  std::vector<ClassSchema> classes;
  std::vector<const ClassSchema*> classesByName;
  host::Schema schema;
};

struct TypeRow {
  std::string_view name;
  ECIMType type;
};

// What a property may be: the types that values have (vel/cimvalue.h).
constexpr TypeRow kPropertyTypes[] = {
    {"string", ECIMType::kString}, {"boolean", ECIMType::kBoolean},
    {"uint8", ECIMType::kUint8},   {"uint16", ECIMType::kUint16},
    {"uint64", ECIMType::kUint64}, {"datetime", ECIMType::kDateTime},
};

// The scanner's numbers are whole and decimal, so one that begins well ends so.
template <class Number>
std::optional<Number> numberOf(std::string_view text) {
  Number number{};
  const std::errc error = std::from_chars(text.begin(), text.end(), number).ec;
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

template <class Number>
bool fits(std::string_view text) {
  return numberOf<Number>(text).has_value();
}

bool fitsAny(std::string_view /*text*/) { return true; }

struct QualifierTypeRow {
  std::string_view name;
  ValueKind kind;
  bool (*fits)(std::string_view text);
};

constexpr QualifierTypeRow kQualifierTypes[] = {
    {"boolean", ValueKind::kBoolean, fitsAny},
    {"string", ValueKind::kString, fitsAny},
    {"uint8", ValueKind::kInteger, fits<std::uint8_t>},
    {"sint8", ValueKind::kInteger, fits<std::int8_t>},
    {"uint16", ValueKind::kInteger, fits<std::uint16_t>},
    {"sint16", ValueKind::kInteger, fits<std::int16_t>},
    {"uint32", ValueKind::kInteger, fits<std::uint32_t>},
    {"sint32", ValueKind::kInteger, fits<std::int32_t>},
    {"uint64", ValueKind::kInteger, fits<std::uint64_t>},
    {"sint64", ValueKind::kInteger, fits<std::int64_t>},
};

enum Scope : std::uint32_t {
  kScopeClass = 1U << 0U,
  kScopeProperty = 1U << 3U,
  kScopeAny = 1U << 7U
};
constexpr std::uint32_t kFlavorRestricted = 1U << 2U;

// Qualifiers that make of a class or property what the reader does not take.
struct Refused {
  std::string_view name;
  const char* what;
};

constexpr Refused kRefusedQualifiers[] = {
    {"Association", "associations are not taken"},
    {"Indication", "indications are not taken"},
    {"EmbeddedObject", "embedded objects are not taken"},
    {"EmbeddedInstance", "embedded instances are not taken"},
};

bool isTrue(TextList values) { return !values.empty() && values.front() == kTrue; }
std::string_view textOf(TextList values) { return values.empty() ? "" : values.front(); }

// The qualifiers that mean something to the framework: each sets a member, or without values takes
// it back. A declaration must give them this type.
template <class Element>
struct Meaning {
  std::string_view name;
  std::string_view type;
  bool isArray = false;
  void (*apply)(Element&, TextList) = nullptr;
};

constexpr Meaning<PropertySchema> kPropertyMeanings[] = {
    {"Description", "string", false,
     [](PropertySchema& p, TextList v) { p.description = textOf(v); }},
    {"Key", "boolean", false, [](PropertySchema& p, TextList v) { p.isKey = isTrue(v); }},
    {"MappingStrings", "string", true, [](PropertySchema& p, TextList v) { p.mappingStrings = v; }},
    {"ValueMap", "string", true, [](PropertySchema& p, TextList v) { p.valueMap = v; }},
    {"Values", "string", true, [](PropertySchema& p, TextList v) { p.values = v; }},
    {"MaxLen", "uint32", false,
     [](PropertySchema& p, TextList v) {
       p.maxLen = numberOf<std::uint32_t>(textOf(v)).value_or(0);
     }},
    {"Override", "string", false, [](PropertySchema&, TextList) {}},
};

constexpr Meaning<ClassSchema> kClassMeanings[] = {
    {"Description", "string", false, [](ClassSchema& c, TextList v) { c.description = textOf(v); }},
    {"Abstract", "boolean", false, [](ClassSchema& c, TextList v) { c.isAbstract = isTrue(v); }},
    {"Provider", "string", false, [](ClassSchema& c, TextList v) { c.provider = textOf(v); }},
};

struct NameHash {
  std::size_t operator()(std::string_view name) const {
    std::size_t hash = 0;
    for (const char c : name) hash = hash * 31 + (static_cast<unsigned char>(c) | 0x20U);
    return hash;
  }
};

struct NameEqual {
  bool operator()(std::string_view a, std::string_view b) const { return isSameIgnoringCase(a, b); }
};

template <class Rows>
auto findRow(Rows& rows, std::string_view name) {
  return std::ranges::find_if(rows,
                              [&](const auto& row) { return isSameIgnoringCase(row.name, name); });
}

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

// The qualifiers that mean something for one kind of element, and those of them whose values
// subclasses do not inherit.
template <class Element>
struct Meanings {
  Scope scope = kScopeAny;
  const char* elements = "";
  std::span<const Meaning<Element>> all = {};
  std::vector<const Meaning<Element>*> declared = {};  // beside the declarations; null: none
  std::vector<const Meaning<Element>*> restricted = {};

  void declare(std::string_view name, std::string_view type, const QualifierDecl& decl) {
    const auto meaning = findRow(all, name);
    declared.push_back(meaning != all.end() ? &*meaning : nullptr);
    if (meaning == all.end()) return;
    if (!isSameIgnoringCase(type, meaning->type) || decl.isArray != meaning->isArray) {
      throw Fault(decl.type.at, std::string(meaning->name) + " is of type " +
                                    std::string(meaning->type) + (meaning->isArray ? "[]" : ""));
    }
    if ((decl.flavors & kFlavorRestricted) != 0) restricted.push_back(&*meaning);
  }

  // What a subclass's element begins as.
  Element inherited(const Element& from) const {
    Element element = from;
    for (const Meaning<Element>* meaning : restricted) meaning->apply(element, {});
    element.qualifiers = {};
    return element;
  }
};

// Null for none.
const char* refusalOf(std::string_view qualifier) {
  const auto* const refused = findRow(kRefusedQualifiers, qualifier);
  return refused != std::end(kRefusedQualifiers) ? refused->what : nullptr;
}

// What a class in the making is made of.
struct Making {
  const ClassDecl& decl;
  const ClassSchema* superclass;
  std::vector<PropertySchema>& properties;
};

class Builder {
 public:
  Builder(const Document& document, Store& store) : document_(document), store_(store) {
    store_.declarations.reserve(document.qualifierDecls.size());
    store_.qualifiers.reserve(document.uses.size());
    store_.properties.reserve(document.classes.size());
    store_.classes.reserve(document.classes.size());
    known_.reserve(document.classes.size());
  }

  void run() {
    for (const QualifierDecl& decl : document_.qualifierDecls) declare(decl);
    for (const ClassDecl& decl : document_.classes) addClass(decl);
  }

 private:
  void declare(const QualifierDecl& decl);
  void checkValues(std::size_t declaration, const Values& values, Place at) const;
  std::string_view text(const Name& name) const { return store_.source.text(name.at, name.length); }
  TextList listOf(Range range) const {
    return TextList(store_.values).subspan(range.begin, range.size());
  }

  template <class Element>
  void carry(Element& element, const Meanings<Element>& meanings, Range uses);
  std::size_t declarationOf(const Name& name) const;
  TextList valuesOf(const QualifierUse& use, std::size_t declaration) const;

  void addClass(const ClassDecl& decl);
  const ClassSchema* superclassOf(const ClassDecl& decl) const;
  std::size_t countProperties(const Making& making);
  void inherit(Making& making) const;
  bool redeclares(const ClassDecl& decl, std::string_view property) const;
  void addProperty(Making& making, const PropertyDecl& decl);
  ECIMType propertyType(const Name& type) const;
  std::span<const PropertyDecl> propertiesOf(const ClassDecl& decl) const {
    return std::span(document_.properties).subspan(decl.properties.begin, decl.properties.size());
  }

  const Document& document_;
  Store& store_;
  std::vector<const QualifierTypeRow*> types_;  // beside the declarations
  std::vector<const char*> refusals_;           // beside them too; null: none
  Meanings<PropertySchema> ofProperties_{kScopeProperty, "properties", kPropertyMeanings};
  Meanings<ClassSchema> ofClasses_{kScopeClass, "classes", kClassMeanings};
  std::unordered_map<std::string_view, const ClassSchema*, NameHash, NameEqual> known_;
  std::size_t propertyCount_ = 0;
};

void Builder::declare(const QualifierDecl& decl) {
  const Place at = decl.name.at;
  const std::string_view name = text(decl.name);
  if (findRow(store_.declarations, name) != store_.declarations.end()) {
    throw Fault(at, "the qualifier " + quoted(name) + " is declared already");
  }
  if (store_.declarations.size() == kMostQualifierDeclarations) {
    throw Fault(at, "a schema declares at most 64 qualifiers");
  }
  const auto* const type = findRow(kQualifierTypes, text(decl.type));
  if (type == std::end(kQualifierTypes)) {
    throw Fault(decl.type.at, "no qualifier is of type " + quoted(text(decl.type)) + " here");
  }
  types_.push_back(type);
  refusals_.push_back(refusalOf(name));
  ofProperties_.declare(name, type->name, decl);
  ofClasses_.declare(name, type->name, decl);
  const bool hasDefault = decl.defaults.form != ValueForm::kNone;
  store_.declarations.push_back({.name = name,
                                 .type = type->name,
                                 .isArray = decl.isArray,
                                 .hasDefault = hasDefault,
                                 .defaults = listOf(decl.defaults.range),
                                 .scopes = decl.scopes,
                                 .flavors = decl.flavors});
  if (hasDefault) checkValues(types_.size() - 1, decl.defaults, at);
}

void Builder::checkValues(std::size_t declaration, const Values& values, Place at) const {
  const auto& [name, type, isArray, hasDefault, defaults, scopes, flavors] =
      store_.declarations[declaration];
  if (values.form != (isArray ? ValueForm::kArray : ValueForm::kSingle)) {
    throw Fault(at, std::string(name) + (isArray ? " needs a list of values: { ... }"
                                                 : " needs one value: ( ... )"));
  }
  const QualifierTypeRow& row = *types_[declaration];
  for (std::uint32_t i = values.range.begin; i < values.range.end; ++i) {
    const ValueNote& note = document_.notes[i];
    if (note.kind == row.kind && row.fits(store_.values[i])) continue;
    throw Fault(note.at, std::string(name) + " has values of type " + std::string(type));
  }
}

std::size_t Builder::declarationOf(const Name& name) const {
  const std::string_view text = this->text(name);
  const auto declaration = findRow(store_.declarations, text);
  const auto row = static_cast<std::size_t>(declaration - store_.declarations.begin());
  const bool isDeclared = declaration != store_.declarations.end();
  if (isDeclared && refusals_[row] == nullptr) return row;
  if (const char* const refusal = isDeclared ? refusals_[row] : refusalOf(text)) {
    throw Fault(name.at, refusal);
  }
  throw Fault(name.at, "the qualifier " + quoted(text) + " is not declared");
}

TextList Builder::valuesOf(const QualifierUse& use, std::size_t declaration) const {
  static constexpr std::string_view kImplied[] = {kTrue};
  const bool isBare = use.values.form == ValueForm::kNone;
  const bool isFlag =
      types_[declaration]->kind == ValueKind::kBoolean && !store_.declarations[declaration].isArray;
  if (isBare && isFlag) return kImplied;
  checkValues(declaration, use.values, use.name.at);
  return listOf(use.values.range);
}

// Gives an element the qualifiers of its text.
template <class Element>
void Builder::carry(Element& element, const Meanings<Element>& meanings, Range uses) {
  const std::size_t begin = store_.qualifiers.size();
  std::uint64_t seen = 0;  // a bit for each declaration
  static_assert(kMostQualifierDeclarations <= 64);
  for (const QualifierUse& use : std::span(document_.uses).subspan(uses.begin, uses.size())) {
    const std::size_t row = declarationOf(use.name);
    const QualifierDeclaration& declaration = store_.declarations[row];
    if ((declaration.scopes & (meanings.scope | kScopeAny)) == 0) {
      throw Fault(use.name.at,
                  "the qualifier " + quoted(text(use.name)) + " is not for " + meanings.elements);
    }
    const TextList values = valuesOf(use, row);
    if ((seen >> row & 1U) != 0) {
      throw Fault(use.name.at, "the qualifier " + quoted(text(use.name)) + " stands here twice");
    }
    seen |= std::uint64_t{1} << row;
    store_.qualifiers.push_back({&declaration, values});
    if (meanings.declared[row] != nullptr) meanings.declared[row]->apply(element, values);
  }
  element.qualifiers = std::span(store_.qualifiers).subspan(begin);
}

const ClassSchema* Builder::superclassOf(const ClassDecl& decl) const {
  if (decl.superclass.length == 0) return nullptr;
  const auto found = known_.find(text(decl.superclass));
  if (found == known_.end()) {
    throw Fault(decl.superclass.at,
                "the superclass " + quoted(text(decl.superclass)) + " is not declared before");
  }
  std::size_t count = 1;
  for (const auto* above = found->second; (above = above->superclass) != nullptr;) ++count;
  if (count > kMostSuperclasses) throw Fault(decl.superclass.at, "has more than 16 superclasses");
  return found->second;
}

// As many as the class can have; what it overrides counts twice.
std::size_t Builder::countProperties(const Making& making) {
  const std::size_t inherited =
      making.superclass != nullptr ? making.superclass->properties.size() : 0;
  const std::size_t most = inherited + making.decl.properties.size();
  const Place at = making.decl.name.at;
  if (most > kMostPropertiesOfAClass) throw Fault(at, "has more than 256 properties");
  propertyCount_ += most;
  if (propertyCount_ <= kMostProperties) return most;
  throw Fault(at, "the classes have more than 65536 properties, inherited ones counted");
}

void Builder::addClass(const ClassDecl& decl) {
  const std::string_view name = text(decl.name);
  if (known_.contains(name)) {
    throw Fault(decl.name.at, "the class " + quoted(name) + " is declared already");
  }
  Making making{decl, superclassOf(decl), store_.properties.emplace_back()};
  const std::size_t most = countProperties(making);
  making.properties.reserve(most);
  ClassSchema made =
      making.superclass != nullptr ? ofClasses_.inherited(*making.superclass) : ClassSchema{};
  made.name = name;
  made.superclass = making.superclass;
  carry(made, ofClasses_, decl.qualifiers);
  inherit(making);
  made.inherited = making.properties.size();
  for (const PropertyDecl& property : propertiesOf(decl)) addProperty(making, property);
  made.properties = making.properties;
  store_.classes.push_back(made);
  known_.emplace(made.name, &store_.classes.back());
}

// Those that the class's text does not have again, in the superclass's order.
void Builder::inherit(Making& making) const {
  if (making.superclass == nullptr) return;
  for (const PropertySchema& property : making.superclass->properties) {
    if (redeclares(making.decl, property.name)) continue;
    making.properties.push_back(ofProperties_.inherited(property));
  }
}

bool Builder::redeclares(const ClassDecl& decl, std::string_view property) const {
  return std::ranges::any_of(propertiesOf(decl), [&](const PropertyDecl& own) {
    return isSameIgnoringCase(text(own.name), property);
  });
}

const PropertySchema* inheritedProperty(const ClassSchema* superclass, std::string_view name) {
  if (superclass == nullptr) return nullptr;
  const auto found = findRow(superclass->properties, name);
  return found == superclass->properties.end() ? nullptr : &*found;
}

// A property that the superclass has is meant to be that one, and says so; any other must not.
void checkOverride(const PropertyDecl& decl, const PropertySchema& property,
                   const PropertySchema* overridden) {
  const auto says = std::ranges::find_if(property.qualifiers, [](const Qualifier& qualifier) {
    return isSameIgnoringCase(qualifier.declaration->name, "Override");
  });
  const bool isSaid = says != property.qualifiers.end();
  if (isSaid && (overridden == nullptr || textOf(says->values) != overridden->name)) {
    throw Fault(decl.name.at, "Override names no property of the superclass that is called so");
  }
  if (overridden == nullptr) return;
  if (!isSaid || property.name != overridden->name) {
    throw Fault(decl.name.at, "the superclass has " + quoted(overridden->name) +
                                  "; to mean it, this one needs its name and Override(" +
                                  quoted(overridden->name) + ")");
  }
  if (property.type != overridden->type) {
    throw Fault(decl.type.at,
                "in the superclass it is of type " + std::string(host::typeName(overridden->type)));
  }
}

// DSP0004: a class whose superclass has keys has the same ones.
void checkKey(const PropertyDecl& decl, const PropertySchema& property,
              const ClassSchema* superclass, const PropertySchema* overridden) {
  const bool wasKey = overridden != nullptr && overridden->isKey;
  if (wasKey == property.isKey) return;
  if (wasKey) throw Fault(decl.name.at, "in the superclass it is a key and stays one");
  const bool hasKeys =
      superclass != nullptr && std::ranges::any_of(superclass->properties, &PropertySchema::isKey);
  if (hasKeys) throw Fault(decl.name.at, "cannot be a key, as the superclass has its keys");
}

void checkMeaning(const PropertyDecl& decl, const PropertySchema& property) {
  if (property.values.size() != property.valueMap.size()) {
    throw Fault(decl.name.at, "has " + std::to_string(property.values.size()) + " Values for " +
                                  std::to_string(property.valueMap.size()) + " of ValueMap");
  }
  if (property.maxLen != 0 && property.type != ECIMType::kString) {
    throw Fault(decl.name.at, "is no string, so it has no MaxLen");
  }
}

ECIMType Builder::propertyType(const Name& type) const {
  const auto* const row = findRow(kPropertyTypes, text(type));
  if (row == std::end(kPropertyTypes)) {
    throw Fault(type.at,
                "no property is of type " + quoted(text(type)) +
                    " here; the types are string, boolean, uint8, uint16, uint64, datetime");
  }
  return row->type;
}

void Builder::addProperty(Making& making, const PropertyDecl& decl) {
  const std::string_view name = text(decl.name);
  if (findRow(making.properties, name) != making.properties.end()) {
    throw Fault(decl.name.at, "the property " + quoted(name) + " is declared already");
  }
  const PropertySchema* const overridden = inheritedProperty(making.superclass, name);
  PropertySchema property =
      overridden != nullptr ? ofProperties_.inherited(*overridden) : PropertySchema{};
  property.name = name;
  property.type = propertyType(decl.type);
  carry(property, ofProperties_, decl.qualifiers);
  checkOverride(decl, property, overridden);
  checkKey(decl, property, making.superclass, overridden);
  checkMeaning(decl, property);
  making.properties.push_back(property);
}

void build(Document document, Store& store) {
  store.values = std::move(document.values);
  Builder(document, store).run();
  store.classesByName.reserve(store.classes.size());
  for (const ClassSchema& cimClass : store.classes) store.classesByName.push_back(&cimClass);
  std::ranges::sort(store.classesByName, {}, &ClassSchema::name);
  store.schema = {store.declarations, store.classes, store.classesByName};
}

}  // namespace

host::SchemaPtr schemaOf(Source source) {
  const auto store = std::make_shared<Store>(std::move(source));
  store->decoded.reserve(store->source.text().size());
  try {
    build(parseDocument(store->source, store->decoded), *store);
  } catch (const Fault& fault) {
    throw host::SchemaError(store->source.where(fault.at()) + ": " + fault.what());
  }
  return {store, &store->schema};
}

}  // namespace NKRXVEL20::mof
