/*
 * Common utilities of libtr104: text, number and IP-address routines.
 *
 * They are exported for the device's other components as well as used by the handlers, so
 * their C signatures stay fixed.  Every routine works in place on the caller's buffers,
 * allocates nothing and keeps no state of its own (apart from the two print switches
 * sdpMdy and nIpv6TestFlag).  Several routines keep edge behaviour that callers rely on;
 * it is described at each declaration and must not be "fixed".
 */
#ifndef TR104_COMMON_H
#define TR104_COMMON_H

#include <stdint.h>

#include "tr104/export.h"

TR104_EXTERN_C_BEGIN

/* ---------------------------------------------------------------------------------------
 * Text and numbers
 * ------------------------------------------------------------------------------------- */

/* Case-insensitive compare (characters folded with tolower, as unsigned char).
 * -1 when either argument is null.  Otherwise walks both texts: 1 when s1 still has a
 * character and s2 has ended, the difference of the first unequal folded characters, -1
 * when s1 ends before s2, 0 when both end together. */
TR104_API int stricmp(const char *s1, const char *s2);

/* Converts hexadecimal text into bytes, two characters per byte, high digit first.
 * Digits 0-9, a-f, A-F; any other character counts as 0 (no error).  The output gets
 * strlen(pcStr) / 2 bytes and no terminator.  Returns 1 done; 0 for an odd length (nothing
 * written) or a null argument. */
TR104_API int rvConvertStrToHexs(const char *pcStr, unsigned char *pucHex);

/* Keeps only the digits 0-9 of the text, in order, moved to its start, and terminates the
 * result.  Returns the number of digits kept (0 for null). */
TR104_API int rvGetNumberFromStr(char *pcStr);

/* Pads the text with cFill to nWidth characters: on the left (text shifted right) when
 * nLeft is non-zero, on the right otherwise, and terminates it after nWidth characters.
 * Returns 0 for a null text or a text of 255 characters or more; 1 unchanged when nWidth
 * is not above the text's length; 1 when padded.  The buffer must hold nWidth + 1 bytes. */
TR104_API int rvFillStringWithChar(char *pcStr, char cFill, int nWidth, int nLeft);

/* 1 when every character is a decimal digit, except that the first may be "-" (so "-" alone
 * and the empty text give 1); else 0.  A null text gives 0. */
TR104_API int rvValidDecimal(const char *pcStr);

/* 1 when every character is a decimal digit (the empty text too); 0 for null or any other
 * character.  The length is counted in 16 bits: of a text of 65536 characters or more only
 * the first (length mod 65536) characters are looked at. */
TR104_API int validDecimal(const char *pcStr);

/* Removes leading spaces (the space character only: tabs stay) by moving the rest to the
 * start, then turns trailing spaces into NULs.  Null is ignored. */
TR104_API void delete_space_from_string(char *pcStr);

/* Collapses runs of spaces within the first nLen bytes of pcBuf.  Wherever a space follows a
 * space, the first of the two is removed by moving the rest of the region left by one and a
 * space is written into the region's last byte; the scan resumes at the removed position as
 * if no space preceded it.  The region keeps its length: freed positions gather as spaces at
 * its end.  A null buffer or nLen below 1 is ignored.
 *
 * WARNING: because the region is never shortened, a region whose last two bytes are (or
 * become) spaces is collapsed again and again and THE CALL NEVER RETURNS.  Every removal
 * appends one space, so the call returns only for regions that hold no two adjacent spaces,
 * or exactly one pair of adjacent spaces and no space in the last byte ("a  b" becomes
 * "a b ").  Hand it only such text. */
TR104_API void rvSkipAllRedundantSpace(char *pcBuf, int nLen);

/* Non-zero: rvSkipAllInvalidSpaceInSdp prints its text before and after. */
TR104_API extern int sdpMdy;

/* Normalises the white space of session-description text within the first nLen bytes.
 * A white-space unit is a space, a line feed, or a carriage return directly followed by a
 * line feed (a lone carriage return is an ordinary character).  Where a unit directly follows
 * another: an earlier space is removed; after a line break the later unit is removed.  Removed
 * bytes are shifted out, as many spaces are written at the end of the shifted region and the
 * region shrinks by that number (padding is never collapsed).  So blanks before a line break
 * disappear, blank lines and blanks after a line break collapse, line breaks stay.  While
 * sdpMdy is set the text is printed with "before= %s\r\n" and "after= %s\r\n" (at most nLen
 * characters).  A null buffer or nLen below 1 is ignored. */
TR104_API void rvSkipAllInvalidSpaceInSdp(char *pcBuf, int nLen);

/* rvResolveNumList results. */
#define RV_NUMLIST_OK 1
#define RV_NUMLIST_BAD_NUMBER (-1) /* a single item is not a decimal number */
#define RV_NUMLIST_OUT_OF_RANGE (-2) /* a single item outside nMin..nMax */
#define RV_NUMLIST_NULL_ARG (-3) /* a null list, value array or count */
#define RV_NUMLIST_BAD_RANGE_END (-4) /* the part after "~" is not a decimal number */
#define RV_NUMLIST_BAD_RANGE (-5) /* b < a, a < nMin, a > nMax or b > nMax */

/* Parses a comma-separated list of numbers and ranges ("1~3,5") into pusValues and stores
 * the number of values in *pnCount; returns 1, or one of the negative codes above (the count
 * is then not written).  The list text is changed (split at "," and spaces collapsed with
 * rvSkipAllRedundantSpace, whose limits apply to every item); empty items are skipped.
 * A single item must pass rvValidDecimal: " 5" (leading blank) does not.
 * Capacity: it is tested only after a value is stored.  A single item that brings the count
 * to nCapacity ends the list; a range stops its own values there but the list goes on, and
 * every later item still stores one value past the capacity.  Give pusValues room beyond
 * nCapacity, or keep lists short. */
TR104_API int rvResolveNumList(char *pcList, int nMin, int nMax, int nCapacity, uint16_t *pusValues, int *pnCount);

/* Checks a dotted IPv4 address text: 0 valid, -1 invalid.  A null or empty text gives 0.
 * Only the first 19 characters are looked at.  They are split at "." (empty parts between two
 * dots are skipped, so "1..2.3.4" passes); each of exactly four parts is trimmed of spaces,
 * must be digits only and below 256 (a part of spaces only counts as 0). */
TR104_API int check_ipaddr(const char *pcIpAddr);

/* 1 for a dotted IPv4 address, 0 for a host name (any letter in the text), -1 invalid: null,
 * empty, 69 characters or longer, a character other than digits and ".", not exactly three
 * dots, not accepted by inet_addr, or 0.0.0.0 or 255.255.255.255. */
TR104_API int rvVerifyIpValid(const char *pcIpAddr);

/* ---------------------------------------------------------------------------------------
 * IP addresses
 * ------------------------------------------------------------------------------------- */

#define COMM_IP_TYPE_V4 1
#define COMM_IP_TYPE_V6 2

/* One IPv4 or IPv6 address with its prefix length (24 bytes, shared with other components). */
typedef struct CommIpAddr {
    uint32_t unType; /* 1 IPv4, 2 IPv6 */
    uint8_t aucAddr[16]; /* network byte order; IPv4 fills the first 4 bytes, the rest 0 */
    uint8_t ucMask; /* prefix length in bits */
    uint8_t aucReserved[3]; /* zero */
} CommIpAddr;

/* Non-zero: CommIpv6AddrPrint and CommIpv6StrPrint print. */
TR104_API extern int nIpv6TestFlag;
/* Versions of the SIP and the H.248 protocol modules: "SIP:<version>  H.248:<version>". */
#define COMM_PROTCL_VERSION_LEN 31
TR104_API extern char gProtclModuleVersion[COMM_PROTCL_VERSION_LEN];

/* -1 null or empty text, 1 IPv4 text, 2 IPv6 text (as inet_pton reads them), 0 otherwise. */
TR104_API int CommCheckIpValid(const char *pcIpStr);

/* Fills *pAddr from an IPv4 or IPv6 text and a prefix length.  Returns 1, or 0 (with a
 * message) for a null argument or a text that is neither. */
TR104_API int CommGetIpValueByStr(CommIpAddr *pAddr, const char *pcIpStr, uint8_t ucMask);

/* Formats *pAddr into pcIpStr, copying at most unSize characters of the text (no terminator
 * when the text fills unSize), and stores its prefix length in *pucMask.  Returns 1; 0 for a
 * null argument (with a message) or an address type other than 1 and 2 (silently). */
TR104_API int CommGetIpStrByValue(char *pcIpStr, uint8_t *pucMask, const CommIpAddr *pAddr, unsigned int unSize);

/* Copies type, address bytes and prefix length.  1 done, 0 for a null argument. */
TR104_API int CommIpAddrCopy(CommIpAddr *pDstAddr, const CommIpAddr *pSrcAddr);

/* 1 when type, all 16 address bytes and prefix length are equal, else 0 (also for null,
 * with a message). */
TR104_API int CommIpAddrCompare(const CommIpAddr *pDstAddr, const CommIpAddr *pSrcAddr);

/* 1 when stAddr lies in stSubnet's subnet, judged by stSubnet's prefix length only (types are
 * not compared), else 0.  A stSubnet equal to the IPv6 loopback ::1 with prefix length 0
 * matches anything.  Prefix lengths above 128 compare the 16 address bytes. */
TR104_API int CommIpAddrInSameSubnet(CommIpAddr stAddr, CommIpAddr stSubnet);

/* Dotted text of an IPv4 number (as inet_ntoa makes it) into pcIpStr (16 bytes suffice).
 * 0, or -1 for a null text. */
TR104_API int CommIpAddrUnIntToStr(uint32_t unIpAddr, char *pcIpStr);

/* inet_addr of the text: 0xFFFFFFFF (-1) for a null or invalid text. */
TR104_API uint32_t CommIpAddrStrToUnInt(const char *pcIpStr);

/* Mask of a prefix length: only the low byte of unBits counts; 0 bits give 0, otherwise all
 * ones shifted left by 32 - bits (24 -> 0xFFFFFF00 as an integer).  0, or -1 for a null
 * output or a count of 33 or more. */
TR104_API int CommIpMaskFromBitToUnInt(uint32_t *punMask, unsigned int unBits);

/* Prefix length of a mask: 0 for 0, otherwise 32 minus the mask's trailing zero bits (holes are
 * not checked: 0x0000FF00 gives 24).  0, or -1 for a null output. */
TR104_API int CommIpMaskFromUnIntToBit(uint8_t *pucBits, uint32_t unMask);

/* IPv4 number and mask of an address value.  0; -1 (nothing written) when an argument is
 * null.  An address that does not format as IPv4 gives 0xFFFFFFFF; a prefix length of 33 or
 * more leaves the mask output unwritten. */
TR104_API int CommGetIp4FromIpAddr(uint32_t *punIpAddr, uint32_t *punMask, const CommIpAddr *pAddr);

/* Builds an IPv4 address value from a number and a mask.  0, or -1 for a null address. */
TR104_API int CommGetIpAddrFromIp4(CommIpAddr *pAddr, uint32_t unIpAddr, uint32_t unMask);

/* Diagnostic prints of an address value, only while nIpv6TestFlag is set (the message for a
 * null argument is always printed). */
TR104_API void CommIpv6AddrPrint(const CommIpAddr *pAddr, const char *pcLabel);
TR104_API void CommIpv6StrPrint(const CommIpAddr *pAddr, const char *pcLabel);

/* Stub: the neighbour lookup is not provided.  -1 for a null output, otherwise 0 without
 * writing a MAC address. */
TR104_API int CommGetMacFromIp(uint8_t *pucMac, const CommIpAddr *pAddr);
/* Stub: always -1. */
TR104_API int nat_nd6_lookup_cmd(const CommIpAddr *pAddr, uint8_t *pucMac);

/* Adds close-on-exec to a descriptor's flags.  -1 for a negative descriptor, 0 done, 1 when
 * the flags cannot be set. */
TR104_API int CommSocketSetCloseExec(int nSocket);

/* Copies gProtclModuleVersion into pcVersion.  Only the low byte of unSize counts.  The first
 * size bytes are zeroed; a size below 32 receives at most size - 1 characters, while a size
 * of 32 or more receives NOTHING (an empty text) and prints a message.  Null is ignored. */
TR104_API void CommGetProtclModuleVersion(char *pcVersion, unsigned int unSize);

TR104_EXTERN_C_END

#endif
