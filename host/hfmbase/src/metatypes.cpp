// SPDX-License-Identifier: GPL-3.0-or-later
#include "hfmbase/metatypes.h"

#include "hfmbase/abstractjobhandler.h"
#include "hfmbase/fileinfo.h"
#include "hfmbase/hostcallbacks.h"

namespace hfmbase {

namespace {

bool doRegister()
{
    qRegisterMetaType<AbstractJobHandler::JobFlags>();
    qRegisterMetaType<AbstractJobHandler::JobFlags>("JobFlags");
    qRegisterMetaType<AbstractJobHandler::JobCallbackKey>();
    qRegisterMetaType<JobHandlePointer>();
    qRegisterMetaType<JobHandlePointer>("JobHandlePointer");
    qRegisterMetaType<CallbackArgus>();
    qRegisterMetaType<CallbackArgus>("CallbackArgus");
    qRegisterMetaType<OperatorHandleCallback>();
    qRegisterMetaType<OperatorHandleCallback>("OperatorHandleCallback");
    qRegisterMetaType<OperatorCallback>();
    qRegisterMetaType<OperatorCallback>("OperatorCallback");

    // Plug-ins look these up by the short names.
    qRegisterMetaType<TopWidCreator>("TopWidCreator");
    qRegisterMetaType<TopWidShowFunc>("TopWidShowFunc");
    qRegisterMetaType<SidebarMenuCreator>("SidebarMenuCreator");
    qRegisterMetaType<FindMeCallback>("FindMeCallback");
    qRegisterMetaType<Qt::ItemFlags>();

    qRegisterMetaType<FileInfoPointer>();
    return true;
}

}   // namespace

void registerMetaTypes()
{
    static const bool done = doRegister();
    Q_UNUSED(done)
}

}   // namespace hfmbase
