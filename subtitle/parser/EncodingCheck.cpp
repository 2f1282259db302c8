// The check of a parser's first entries for Big5 and GBK.
#include "subtitle/parser/EncodingCheck.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "subtitle/charset/Charset.h"
#include "subtitle/parser/EntryText.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/StopRequest.h"

namespace vxsubtitle {

void checkEntries(SubtitleParser& parser, const CheckStyle& style) {
    if (parser.m_eCodeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE) return;
    if (style.start != nullptr) VX_LOG(style.tag, "%s", style.start);
    U8* const text = static_cast<U8*>(calloc(1, kWorkBufferSize));
    if (text == nullptr) return;
    const StopRequest stop(parser.mWorkerState);
    U32 used = 0;
    for (U32 index = 0; index < 100 && !stop.isMade(); ++index) {
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        if (parser.GetTagInfo(0, index, &tag) != TRUE) break;
        memset(text, 0, usedOf(text, used));
        used = std::min(parser.GetData(0, text, kWorkBufferSize, index), kWorkBufferSize);
        // kept(utf8-unmarked-as-gbk): the test knows double-byte codes alone, so UTF-8 may pass for GBK
        // kept(utf8-unmarked-as-big5): so UTF-8 may pass for Big5, too
        const U32 possible = parser.CheckPossibleEncodings(text);
        if (style.entry != nullptr) VX_LOG(style.tag, style.entry, asLong(index), asLong(possible));
        // kept(codepage-as-gbk): a text that only GBK can be decides, be it of a code page
        // kept(codepage-as-big5): a text that only Big5 can be decides, be it of a code page
        if (possible != kMaybeBig5 && possible != kMaybeGbk) continue;
        parser.m_eCodeType =
            possible == kMaybeBig5 ? E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5 : E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK;
        if (style.decided != nullptr) VX_LOG(style.tag, style.decided, U32{parser.m_eCodeType});
        break;
    }
    free(text);
}

}  // namespace vxsubtitle
