#pragma once

/// The return values of the functions that cross the component boundary, in both directions.
enum HXStatus {
    HX_OK = 0,
    HX_FAILED = 1,           ///< an execution failed, or the component could not be made
    HX_BAD_HANDLE = 2,       ///< no host; no component, or one at work; or a call of the host's failed
    HX_NOT_SUPPORTED = 3,    ///< the component does not take part in this
    HX_NO_MORE_RECORDS = 4,  ///< there is no output record, or none any more
    HX_NO_HELPER = 5,        ///< the component has no usable host, or was given no container
    HX_CONFIGURATION_FAILED = 6,
    HX_NO_COMPONENT = 9,       ///< no component, from `hx_component_getMessages` alone
    HX_BUFFER_TOO_SMALL = 13,  ///< `*needed` says how many bytes are
    HX_NO_HOST_HELPER = 15     ///< `hx_getModuleInformation` without a usable host
};

/// What an `errorCode` says. A host may put codes of its own into the `errorCode` of its functions; they come back
/// to it unchanged, that of an iterator which fails before any record apart. The codes of messages (220001 and above)
/// are given with the messages.
enum HXError {
    HX_ERROR_NO_COMPONENT = 240001,     ///< the component could not be made
    HX_ERROR_SETTINGS = 240002,         ///< the settings document can't be had or is none
    HX_ERROR_DATA_MODEL = 240003,       ///< the data model can't be had or is none
    HX_ERROR_FIELDS = 240004,           ///< the data model describes fields that can't be
    HX_ERROR_NO_REQUIREMENTS = 240005,  ///< asked for the requirements of a component that is not configured
    HX_ERROR_NO_RECORD = 240037,        ///< the input iterator delivered no record, or failed before the first one
    HX_ERROR_RECORDS = 240038,          ///< the input iterator failed later, or its records don't fit the data model
    HX_ERROR_OUT_OF_MEMORY = 220012
};
