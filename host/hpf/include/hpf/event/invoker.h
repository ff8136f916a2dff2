// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hpf/hpf_global.h>

#include <QIcon>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>

// Out-arguments travel through QVariant as plain pointers.
Q_DECLARE_METATYPE(QString *)
Q_DECLARE_METATYPE(QList<QIcon> *)
Q_DECLARE_METATYPE(QList<QUrl> *)
Q_DECLARE_METATYPE(QVariant *)

namespace hpf {

// A receiver adapted to the framework's calling convention: it takes the
// argument list of an event and gives back the receiver's return value
// (invalid for void receivers or when the arguments were refused).
using Invoker = std::function<QVariant(const QVariantList &)>;

namespace detail {

HPF_EXPORT void warnArgumentCount(const QString &where, int expected, int given);
HPF_EXPORT void warnArgumentType(const QString &where, int index, const char *expected, const QVariant &given);
HPF_EXPORT void warnReceiverGone(const QString &where);

template <class T> QVariant toVariant(T &&value)
{
    using D = std::decay_t<T>;
    if constexpr (std::is_same_v<D, const char *> || std::is_same_v<D, char *>)
        return QVariant(QString::fromUtf8(value));
    else
        return QVariant::fromValue(std::forward<T>(value));
}

// Converts one argument to the parameter type D; false when it cannot.
template <class D> bool convertArg(const QVariant &v, D *out)
{
    if constexpr (std::is_same_v<D, QVariant>) {
        *out = v;
        return true;
    } else if constexpr (std::is_pointer_v<D> && std::is_base_of_v<QObject, std::remove_pointer_t<D>>) {
        const int id = qMetaTypeId<D>();
        if (v.userType() == id) {
            *out = v.value<D>();
            return true;
        }
        if (!v.isValid())
            return false;
        if (QMetaType::typeFlags(v.userType()) & QMetaType::PointerToQObject) {
            QObject *obj = *static_cast<QObject *const *>(v.constData());
            if (!obj) {
                *out = nullptr;
                return true;
            }
            D cast = qobject_cast<D>(obj);
            if (!cast)
                return false;
            *out = cast;
            return true;
        }
        return false;
    } else {
        const int id = qMetaTypeId<D>();
        if (v.userType() == id) {
            *out = v.value<D>();
            return true;
        }
        if (!v.isValid())
            return false;
        QVariant copy(v);
        if (!copy.canConvert(id) || !copy.convert(id))
            return false;
        *out = copy.value<D>();
        return true;
    }
}

template <class F> struct CallableTraits : CallableTraits<decltype(&F::operator())>
{
};
template <class R, class... A> struct CallableTraits<R (*)(A...)>
{
    using Return = R;
    using Args = std::tuple<A...>;
};
template <class R, class C, class... A> struct CallableTraits<R (C::*)(A...)>
{
    using Return = R;
    using Args = std::tuple<A...>;
};
template <class R, class C, class... A> struct CallableTraits<R (C::*)(A...) const>
{
    using Return = R;
    using Args = std::tuple<A...>;
};

template <class Args> struct Decayed;
template <class... A> struct Decayed<std::tuple<A...>>
{
    using Type = std::tuple<std::decay_t<A>...>;
};

template <class Tuple, std::size_t... I>
bool convertAll(const QString &where, const QVariantList &args, Tuple &values, std::index_sequence<I...>)
{
    bool ok = true;
    (void)std::initializer_list<int> {(
        ok = ok &&
            [&] {
                if (convertArg(args.at(int(I)), &std::get<I>(values)))
                    return true;
                warnArgumentType(
                    where, int(I), QMetaType::typeName(qMetaTypeId<std::tuple_element_t<I, Tuple>>()), args.at(int(I)));
                return false;
            }(),
        0)...};
    return ok;
}

// Calls `call(values...)` after converting `args`; R is the callee's return type.
template <class R, class Tuple, class Call>
QVariant invokeConverted(const QString &where, const QVariantList &args, Call &&call)
{
    constexpr std::size_t N = std::tuple_size_v<Tuple>;
    if (args.size() != int(N)) {
        warnArgumentCount(where, int(N), args.size());
        return QVariant();
    }
    Tuple values;
    if (!convertAll(where, args, values, std::make_index_sequence<N>()))
        return QVariant();
    if constexpr (std::is_void_v<R>) {
        std::apply(call, values);
        return QVariant();
    } else {
        return QVariant::fromValue(std::apply(call, values));
    }
}

}   // namespace detail

// Adapts a member function of `obj` (any arity, const or not). A QObject
// receiver that has been destroyed is refused with a warning.
template <class T, class Method> Invoker makeInvoker(T *obj, Method method, const QString &where)
{
    static_assert(std::is_member_function_pointer_v<Method>, "makeInvoker needs a member function");
    using Traits = detail::CallableTraits<Method>;
    using Values = typename detail::Decayed<typename Traits::Args>::Type;
    using R = typename Traits::Return;
    if constexpr (std::is_base_of_v<QObject, T>) {
        QPointer<T> guard(obj);
        return [guard, method, where](const QVariantList &args) -> QVariant {
            if (!guard) {
                detail::warnReceiverGone(where);
                return QVariant();
            }
            T *o = guard.data();
            return detail::invokeConverted<R, Values>(
                where, args, [o, method](auto &...v) -> decltype(auto) { return (o->*method)(v...); });
        };
    } else {
        return [obj, method, where](const QVariantList &args) -> QVariant {
            return detail::invokeConverted<R, Values>(
                where, args, [obj, method](auto &...v) -> decltype(auto) { return (obj->*method)(v...); });
        };
    }
}

// Adapts any callable (lambda, std::function, function pointer).
template <class F> Invoker makeInvoker(F func, const QString &where)
{
    using Traits = detail::CallableTraits<std::decay_t<F>>;
    using Values = typename detail::Decayed<typename Traits::Args>::Type;
    using R = typename Traits::Return;
    return [func, where](const QVariantList &args) mutable -> QVariant {
        return detail::invokeConverted<R, Values>(
            where, args, [&func](auto &...v) -> decltype(auto) { return func(v...); });
    };
}

// Builds an argument list from C++ values; string literals become QString.
template <class... Args> QVariantList makeArgs(Args &&...args)
{
    return QVariantList {detail::toVariant(std::forward<Args>(args))...};
}

}   // namespace hpf
