/// Makes a reference-counted class out of a C structure with `common.incRef` and `common.decRef`.
#pragma once

#include <nativebase/nativebase.h>
#include <system/window.h>

namespace android {

template <typename NATIVE_TYPE, typename TYPE, typename REF, typename NATIVE_BASE = android_native_base_t>
class ANativeObjectBase : public NATIVE_TYPE, public REF {
public:
    void incStrong(const void* id) const { REF::incStrong(id); }  // both bases have the pair
    void decStrong(const void* id) const { REF::decStrong(id); }

protected:
    ANativeObjectBase() {
        NATIVE_TYPE::common.incRef = incRef;
        NATIVE_TYPE::common.decRef = decRef;
    }

    static TYPE* getSelf(NATIVE_TYPE* self) { return static_cast<TYPE*>(self); }
    static const TYPE* getSelf(const NATIVE_TYPE* self) { return static_cast<const TYPE*>(self); }
    static TYPE* getSelf(NATIVE_BASE* base) { return getSelf(reinterpret_cast<NATIVE_TYPE*>(base)); }

    static void incRef(NATIVE_BASE* base) {
        ANativeObjectBase* const self = getSelf(base);
        self->incStrong(self);
    }
    static void decRef(NATIVE_BASE* base) {
        ANativeObjectBase* const self = getSelf(base);
        self->decStrong(self);
    }
};

}  // namespace android
