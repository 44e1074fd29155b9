#include "shell/validate_parameters.h"

#include "files/open_document_file.h"

namespace tagwright {
namespace {

constexpr TextView kElementTypes[] = {U"#comment", U"#element", U"#pi", U"#aspcode", U"#dtd"};
constexpr TextView kContentTypes[] = {U"outermarkup", U"innermarkup", U"innertext"};

template <std::size_t N>
bool isOneOf(TextView value, const TextView (&choices)[N]) {
  for (TextView choice : choices) {
    if (value == choice) return true;
  }
  return false;
}

Text messageFor(int number, const Query& query) {
  switch (number) {
    case 60000:
      return U"A physical or virtual path and file name of the target document must be provided.";
    case 60001:
      return U"The virtual path provided does not map to a physical path on the server.";
    case 60002:
      return U"The return content type parameter must be 'outerMarkup', 'innerMarkup' or "
             U"'innerText'.";
    case 60003:
      return U"The start element instance number must be greater than zero.";
    case 60004:
      return U"The available element types are '#element', '#comment', '#pi', '#aspcode' and "
             U"'#dtd'.";
    case 60005:
      return U"Illegal format in span function parameter: '" + query.SpanFunction + U"'.";
    case 60006:
      return U"Illegal format in string function parameter: '" + query.StringFunction + U"'.";
    case 60007:
      return U"Cannot open document file: '" + query.DocumentName + U"'.";
    case 60008:
      return U"The use of physical file paths is denied by the administrator.";
    case 60009:
      return U"The 'StringFunction' and 'SpanFunction' arguments cannot be used at the same time.";
    case 60010:
      return U"Virtual file paths can only be used when running in ASP.";
    default:
      return U"Unidentified Error while validating parameters.";
  }
}

bool holds(TextView text, char32_t c) { return text.find(c) != TextView::npos; }

void checkRequest(const ValidationContext& context, Query& query, Text& resultSeparator,
                  Int16& fileNumber) {
  if (query.DocumentName.empty()) throw Failure::numbered(60000);
  if (isPhysicalPath(query.DocumentName)) {
    if (!context.allowPhysicalPath) throw Failure::numbered(60008);
  } else {
    if (context.scriptingContext == nullptr) throw Failure::numbered(60010);
    query.DocumentName =
        fromUtf8(context.scriptingContext->Server().MapPath(toUtf8(query.DocumentName)));
  }
  if (query.DocumentName.empty()) throw Failure::numbered(60001);

  if (query.ElementName.empty()) {
    query.ElementName = U"#element";
  } else if (query.ElementName[0] == U'#' && !isOneOf(query.ElementName, kElementTypes)) {
    throw Failure::numbered(60004);
  }
  if (query.AttributeName.empty()) query.AttributeName = U"*";
  if (query.AttributeValue.empty()) query.AttributeValue = U"*";
  if (query.StartInstance < 1) throw Failure::numbered(60003);
  // 32000, not 32767: a request for no instances takes up to 32000.
  if (query.CountInstances < 1) query.CountInstances = 32000;
  if (query.ContentType.empty()) query.ContentType = U"innermarkup";
  if (!isOneOf(query.ContentType, kContentTypes)) throw Failure::numbered(60002);
  if (!query.SpanFunction.empty()) {
    if (!holds(query.SpanFunction, U',')) throw Failure::numbered(60005);
    if (!query.StringFunction.empty()) throw Failure::numbered(60009);
  }
  if (!query.StringFunction.empty() && !holds(query.StringFunction, U',')) {
    throw Failure::numbered(60006);
  }
  if (resultSeparator.empty()) resultSeparator = Text(1, U'\0');
  // The document is only ever opened for input; a rewrite writes elsewhere.
  fileNumber = openDocumentFile(context.platform, query.DocumentName, false);
  if (fileNumber == 0) throw Failure::numbered(60007);
}

}  // namespace

bool isPhysicalPath(TextView path) { return holds(path, U'\\') || holds(path, U':'); }

Text validateParameters(const ValidationContext& context, Query& query, Text& resultSeparator,
                        Int16& fileNumber) {
  fileNumber = 0;
  try {
    checkRequest(context, query, resultSeparator, fileNumber);
    return {};
  } catch (const Failure& failure) {
    context.platform.closeAllFiles();
    return messageFor(failure.kind() == Failure::Kind::kNumbered ? failure.number() : 0, query);
  } catch (...) {
    // Above all a failure that the host raised in MapPath.
    context.platform.closeAllFiles();
    return messageFor(0, query);
  }
}

}  // namespace tagwright
