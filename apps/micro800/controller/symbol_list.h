#ifndef APPS_MICRO800_CONTROLLER_SYMBOL_LIST_H
#define APPS_MICRO800_CONTROLLER_SYMBOL_LIST_H

#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>

#include "apps/micro800/controller/controller_session.h"
#include "apps/micro800/format/tag_type.h"

/// A variable as the controller's symbol object (class 6B) lists it. Nothing in it has been checked
/// but its presence: the name may contain any byte.
struct Symbol {
    quint32 instance = 0;
    QByteArray name;
    int typeWord = 0;             ///< attribute 2
    QVector<quint32> dimensions;  ///< elements of each; empty for no array

    bool isStructure() const;
    /// One of the system's own, not of the program.
    bool isSystem() const;
    /// Type code of an element; of no meaning for a structure.
    int typeCode() const;
    /// "DINT", "a structure".
    QString typeText() const;
    /// The prefix type; null when there is none, for a structure, and when the name is none that an
    /// address can contain.
    const TagType* tagType() const;
    /// DINT0:COUNTER, or DINT0:RECIPE[0..9,0..4] for an array; empty without a tagType().
    QString address() const;
    /// Why there is no address; empty when there is one.
    QString problem() const;
};

/// Sends one request to an object: ControllerSession::object.
typedef std::function<ObjectReply(int service, const QByteArray& path, const QByteArray& data)>
    ObjectRequester;

/// Takes the entries of one reply apart. False when they are malformed, or when an instance
/// is not above the one before it (`last` is that of the reply before; 0 for none).
bool takeSymbols(const QByteArray& data, quint32 last, QVector<Symbol>* symbols);

/// Asks for all variables: Get_Instance_Attribute_List (55) for name, type and dimensions, again
/// and again from where the last reply ended. False when the controller refuses or answers with
/// what is no list; `problem` is the client's text, or a sentence.
bool listSymbols(const ObjectRequester& request, QVector<Symbol>* symbols, QString* problem);

#endif
