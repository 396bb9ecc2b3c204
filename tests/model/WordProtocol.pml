/*
 * The word protocol of the message segment, for spin: clients, the reference host, what the host
 * mends, and how everybody is sent away, in steps of single machine actions. tests/model/check
 * searches every state.
 *
 * Every statement is one action on the shared words as the processor makes it: a read, a store, a
 * swap. What is in one d_step or atomic is one such action and what only this model knows of it (who
 * holds what), or a computation on a process's own values. Inlines and macros have the names of the
 * functions that they stand for; macros are those that leave by a goto.
 *
 * Halting needs no statement: a process that is not chosen for a while is halted, wherever it is.
 * A crash ends a process between any two of its actions and leaves the words as they are. Time is
 * not counted: after any attempt in vain a deadline may have come, or not.
 *
 * What is promised:
 *   - who ends with status 0 has read the reply to its own request, without an error text of others,
 *     or that the host ended;
 *   - in a segment that is not closed no two live parties hold one lock word; in a closed one at most
 *     one live client is past the first look at the flag;
 *   - nobody leaves a condition without its enter lock (in a segment that is not closed);
 *   - nobody's words are put to rest while the holder of the request lock lives;
 *   - with EVERYBODY_ENDS: every client ends, if everybody gets processor time again and again.
 *
 * Sizes:
 *   CLIENTS         how many there are
 *   TIMED           how many of them, counted from the first, have a time-out
 *   EXCHANGES       how many exchanges each makes
 *   CRASHES         how many clients may die
 *   HOST_CRASHES    1: the host may die; another one finds its segment then
 *   HOST_STOPS      1: the host may be asked to stop
 *   READS_AT_ONCE   the watch reads all words in one step, and looks at all clients in one: fewer
 *                   states, for searches that are about something else
 *   NO_LOOKS        the host never looks around, for searches in which nobody dies
 *
 * Rules that are wrong, for the check to find out:
 *   OLD_RULE        a client leaves the reply's waiters at its deadline without the enter lock
 *   WINDOWS=1, 2    so many windows are enough for a verdict
 *   NO_MARK         a client that goes through its exchange within a window leaves no trace
 *   OWN_WORDS       each window is compared with words of its own, and marked anew
 *   NO_GATE         the holder may be one that waits for a reply which is still owed
 *   NO_COMMAND_GATE the holder may be one that waits for the host to take a command
 *   ANY_STEP        a step that gets on is as good a proof as an attempt in vain
 *   HOST_OWES       the host judges between the enter lock and the command
 *   LATE_TEXT       the farewell is written whenever somebody seems to wait
 *   NO_ROUND        where nobody is inside no door is opened
 *   STOP_AND_JOIN   a host that stops joins the waiters of a condition that it has left by itself
 *   REPLIES_ONLY    not a rule: only the replies are looked at, to see what a wrong rule does to them
 */

#ifndef CLIENTS
#define CLIENTS 2
#endif
#ifndef TIMED
#define TIMED 1
#endif
#ifndef EXCHANGES
#define EXCHANGES 1
#endif
#ifndef CRASHES
#define CRASHES 0
#endif
#ifndef WINDOWS
#define WINDOWS 3
#endif
#ifndef HOST_CRASHES
#define HOST_CRASHES 0
#endif
#ifndef HOST_STOPS
#define HOST_STOPS 0
#endif

/* The segment. */
#define LOCK 0         /* request lock */
#define MUTEX 1        /* exchange mutex */
#define REQUEST 2      /* request condition: enter lock, command, waiters */
#define REPLY 5        /* reply condition, the same */
#define ENTER(c) (c)
#define COMMAND(c) ((c) + 1)
#define WAITERS(c) ((c) + 2)
#define PENDING 8      /* 0; 1 set by a client; 2 the same, seen by the watch */
#define WORDS 9
byte w[WORDS];
bool closed;
bool taken;            /* the taken mark in the request's last byte */
byte buffer;           /* a request's number, ANSWER + that number, or EMPTY */
byte text;             /* the error text: none, or that the host ended */
#define EMPTY 0
#define ANSWER 32
#define HOST_ENDED 1

/* What the kernel knows: who maps the segment, who is dead. */
#define HOST CLIENTS
bool inside[CLIENTS];
bool dead[CLIENTS + 1];

/* What only this model knows. */
#define NOBODY 255
#define HANDED_OVER 254  /* an enter lock on its way from a notifier to the waiter */
byte owner[WORDS];       /* of a lock word */
bool ended[CLIENTS];     /* has made all its exchanges */
bool past[CLIENTS];      /* got past the first look at the closed flag, still in its exchange */

/* The watch: clients that have tried in vain in this window, or came in it. */
byte window;
bool vain[CLIENTS];

/* In a closed segment it does not matter any more who holds what. */
#define Own(word, who) owner[word] = (closed -> NOBODY : who)

inline DisownAll(who) {
    place = 0;
    do
    :: place < WORDS ->
       if
       :: closed || owner[place] == who -> owner[place] = NOBODY
       :: else
       fi;
       place++
    :: else -> break
    od;
    place = 0
}

inline Attempted(who) {
    if
    :: who < CLIENTS && window -> vain[who] = true
    :: else
    fi
}

#ifdef ANY_STEP
#define Stepped(who) Attempted(who)
#else
#define Stepped(who) skip
#endif

#ifdef REPLIES_ONLY
#define AssertFree(word) skip
#define AssertEntered(who, condition) skip
#define AssertAlone(other) skip
#define AssertDead(other) skip
#else
#define AssertFree(word) assert(closed || owner[word] == NOBODY)
#define AssertEntered(who, condition) \
    assert(closed || (w[ENTER(condition)] == 1 && owner[ENTER(condition)] == who))
#define AssertAlone(other) assert(!past[other])
#define AssertDead(other) assert(owner[LOCK] != other)
#endif

/* One attempt is a swap and a look whether the word now reads 1. */
inline SwapIn(who, word) {
    d_step {
        w[word] == 0 -> w[word] = 1;
        AssertFree(word);
        Own(word, who);
        Stepped(who)
    }
}

inline Disown(who, word) {
    if
    :: owner[word] == who -> owner[word] = NOBODY
    :: else
    fi
}

/* Without a deadline: for ever. */
inline AcquireWord(who, word) {
    do
    :: SwapIn(who, word);
       if
       :: w[word] == 1 -> break
       :: d_step { w[word] != 1 -> Disown(who, word) }
       fi
    :: d_step { w[word] != 0 -> Attempted(who) }
    od
}

/* After an attempt in vain the deadline of a client with a time-out may have come. */
#define AcquireWordUntil(who, word, timed, gaveUp) \
    do \
    :: SwapIn(who, word); \
       if \
       :: w[word] == 1 -> break \
       :: d_step { w[word] != 1 -> Disown(who, word) } \
       fi \
    :: d_step { w[word] != 0 -> Attempted(who) } \
    :: timed && w[word] != 0 -> goto gaveUp \
    od

inline ReleaseWord(who, word) {
    atomic {
        if
        :: w[word] == 1 -> w[word] = 0
        :: else
        fi;
        Disown(who, word);
        Stepped(who)
    }
}

inline Subtract(who, condition) {
    assert(w[WAITERS(condition)] > 0);
    w[WAITERS(condition)]--;
    Stepped(who)
}

/* The waiter that took the command has the enter lock from the notifier, and frees it. */
inline LeaveNotified(who, condition) {
    d_step { Own(ENTER(condition), who); AssertEntered(who, condition); Subtract(who, condition) };
    ReleaseWord(who, ENTER(condition))
}

/* The client. */

#define id (me * EXCHANGES + made)

inline NotifyOne(me) {
    AcquireWord(me, ENTER(REQUEST));
    if
    :: w[WAITERS(REQUEST)] > 0 ->
       do
       :: d_step {
              w[COMMAND(REQUEST)] == 0 -> w[COMMAND(REQUEST)] = 1;
              Own(ENTER(REQUEST), HANDED_OVER);
              Stepped(me)
          }
          break
       :: d_step { w[COMMAND(REQUEST)] != 0 -> Attempted(me) }
       od
    :: w[WAITERS(REQUEST)] == 0 -> ReleaseWord(me, ENTER(REQUEST))
    fi
}

#define JoinWaiters(me, gaveUp) \
    AcquireWordUntil(me, ENTER(REPLY), timed, gaveUp); \
    atomic { w[WAITERS(REPLY)]++; Stepped(me) } \
    ReleaseWord(me, MUTEX); \
    ReleaseWord(me, ENTER(REPLY))

/* At the deadline: one attempt at the enter lock; in vain it means that a notification is under
 * way. */
inline LeaveWaiters(me) {
#ifdef OLD_RULE
    if
    :: w[ENTER(REPLY)] != 0 ->
       d_step { AssertEntered(me, REPLY); Subtract(me, REPLY) };
       break
    :: true
    fi;
#endif
    if
    :: SwapIn(me, ENTER(REPLY));
       if
       :: w[ENTER(REPLY)] == 1 ->
          d_step { AssertEntered(me, REPLY); Subtract(me, REPLY) };
          ReleaseWord(me, ENTER(REPLY));
          break
       :: d_step { w[ENTER(REPLY)] != 1 -> Disown(me, ENTER(REPLY)) }
       fi
    :: d_step { w[ENTER(REPLY)] != 0 -> Attempted(me) }
    fi
}

inline AwaitCommand(me) {
    do
    :: w[COMMAND(REPLY)] != 0 ->  /* TakeCommand */
       if
       :: d_step {
              w[COMMAND(REPLY)] == 1 -> w[COMMAND(REPLY)] = 0;
              notified = true;
              Stepped(me)
          }
          LeaveNotified(me, REPLY);
          break
       :: w[COMMAND(REPLY)] == 0
       fi
    :: d_step { w[COMMAND(REPLY)] == 0 -> Attempted(me) }
    :: timed && w[COMMAND(REPLY)] == 0 -> LeaveWaiters(me)
    od
}

/* Nobody but the one client that the closing met in its exchange is past the look at the flag. */
inline LookAtClosed(me) {
    d_step {
        !closed -> past[me] = true;
        other = 0;
        do
        :: other < CLIENTS ->
           if
           :: other != me -> AssertAlone(other)
           :: else
           fi;
           other++
        :: else -> break
        od;
        other = 0
    }
}

proctype Client(byte me) {
    bool timed = me < TIMED;
    byte made;
    bool notified;
    byte answer;
    byte other;
    {
        do
        :: d_step { made < EXCHANGES -> made++; inside[me] = true };
        AcquireWordUntil(me, LOCK, timed, leave);
        AcquireWordUntil(me, MUTEX, timed, freeLock);
        /* DeliverRequest */
        if
        :: closed -> goto freeMutex
        :: LookAtClosed(me)
        fi;
        buffer = id;
        taken = false;
        NotifyOne(me);
        atomic { w[PENDING] = 1; Stepped(me) };
        if
        :: closed -> goto freeMutex
        :: !closed
        fi;
        if
        :: w[PENDING] == 0 -> goto read
        :: w[PENDING] != 0
        fi;
        /* WaitOnCondition */
        if
        :: timed -> goto freeMutex
        :: true
        fi;
        JoinWaiters(me, freeMutex);
        AwaitCommand(me);
        AcquireWord(me, MUTEX);
        if
        :: !notified -> goto freeMutex
        :: notified
        fi;
read:
        answer = buffer;
        d_step {
            assert((answer == ANSWER + id && text == 0) ||
                   (answer == EMPTY && text == HOST_ENDED));
            answer = 0
        };
freeMutex:
        atomic { past[me] = false; ReleaseWord(me, MUTEX) }
freeLock:
        ReleaseWord(me, LOCK);
leave:
        atomic { inside[me] = false; notified = false }
        :: made == EXCHANGES -> break
        od;
        ended[me] = true
    } unless { dead[me] -> d_step { notified = false; answer = 0; other = 0 } }
}

/* The host. */

inline JoinWaitersForRequest() {
    AcquireWord(HOST, ENTER(REQUEST));
    w[WAITERS(REQUEST)]++;
    ReleaseWord(HOST, MUTEX);
    ReleaseWord(HOST, ENTER(REQUEST))
}

#define NEW_REQUEST (w[PENDING] != 0 && !taken)

/* Whatever the verdict rests on is forgotten when the host gets on. */
inline ForgetLooks() {
    window = 0;
    other = 0;
    do
    :: other < CLIENTS -> vain[other] = false; other++
    :: else -> break
    od;
    other = 0;
    do
    :: other < WORDS -> seen[other] = 0; other++
    :: else -> break
    od;
    other = 0
}

inline PutWordToRest(word, value) {
    d_step { w[word] = value; owner[word] = (value -> HOST : NOBODY) }
}

inline CheckNobodyHolds() {
    other = 0;
    do
    :: other < CLIENTS ->
       AssertDead(other);
       other++
    :: else -> break
    od;
    other = 0
}

/* The host holds the mutex then, and is no waiter any more. */
inline PutToRest() {
    d_step { CheckNobodyHolds(); ForgetLooks() };
    PutWordToRest(MUTEX, 1);
    w[PENDING] = 0;
    w[WAITERS(REQUEST)] = 0;
    w[COMMAND(REQUEST)] = 0;
    PutWordToRest(ENTER(REQUEST), 0);
    w[WAITERS(REPLY)] = 0;
    w[COMMAND(REPLY)] = 0;
    PutWordToRest(ENTER(REPLY), 0);
    PutWordToRest(LOCK, 0)
}

/* The kernel's exclusive use: whoever opens the segment meanwhile waits, so this is one step. */
inline PutToRestAlone() {
    w[MUTEX] = 1; owner[MUTEX] = HOST;
    w[PENDING] = 0;
    w[WAITERS(REQUEST)] = 0; w[COMMAND(REQUEST)] = 0; w[ENTER(REQUEST)] = 0;
    w[WAITERS(REPLY)] = 0; w[COMMAND(REPLY)] = 0; w[ENTER(REPLY)] = 0;
    owner[ENTER(REQUEST)] = NOBODY; owner[ENTER(REPLY)] = NOBODY;
    w[LOCK] = 0; owner[LOCK] = NOBODY;
    ForgetLooks()
}

#define ALL_IN_VAIN_1 (!inside[0] || vain[0]) && (!inside[1] || vain[1])
#if CLIENTS == 2
#define ALL_IN_VAIN ALL_IN_VAIN_1
#define NOBODY_INSIDE (!inside[0] && !inside[1])
#elif CLIENTS == 3
#define ALL_IN_VAIN ALL_IN_VAIN_1 && (!inside[2] || vain[2])
#define NOBODY_INSIDE (!inside[0] && !inside[1] && !inside[2])
#else
#define ALL_IN_VAIN ALL_IN_VAIN_1 && (!inside[2] || vain[2]) && (!inside[3] || vain[3])
#define NOBODY_INSIDE (!inside[0] && !inside[1] && !inside[2] && !inside[3])
#endif

/* What a live holder may wait for in vain: its reply, or an enter lock that comes free when the host
 * takes the command. */
#ifdef NO_GATE
#define REPLY_OWED false
#else
#define REPLY_OWED \
    (seen[WAITERS(REPLY)] > 0 && seen[COMMAND(REPLY)] == 0 && seen[ENTER(REPLY)] == 0)
#endif
#ifdef NO_COMMAND_GATE
#define OWED REPLY_OWED
#else
#define OWED (REPLY_OWED || seen[COMMAND(REQUEST)] != 0)
#endif
#ifdef NO_MARK
#define MARK_PENDING skip
#define PASSAGE_UNSEEN false
#else
#define MARK_PENDING if :: w[PENDING] == 1 -> w[PENDING] = 2 :: else fi
#define PASSAGE_UNSEEN (seen[PENDING] == 1)
#endif

#ifdef STOP_AND_JOIN
#define JOIN_CLOSED && false
#else
#define JOIN_CLOSED
#endif

/* Where it is asked whether everybody ends, the host looks around after each attempt in vain, and
 * never instead of one. Elsewhere it may look at any time. */
#ifdef EVERYBODY_ENDS
#define VAIN_ATTEMPT(word) w[word] != 0 ->
#define NO_COMMAND w[COMMAND(REQUEST)] == 0 ->
#define ANOTHER_ROUND false
#define NOTHING_TO_SEE :: else
#else
#define VAIN_ATTEMPT(word)
#define NO_COMMAND
#define ANOTHER_ROUND true
#define NOTHING_TO_SEE
#endif

/* CHolderWatch::Judge. A window begins with a mark, the words, read one after the other, and a look at
 * the clients; it ends with a look at the clients and the words again. Who mapped the segment at both
 * ends must have made an attempt in vain between them: it waits for somebody else then, unless it is
 * the holder, and what a holder may wait for is excluded by the words or not there for long. A client
 * that becomes the holder in a window may still have waited in vain for the lock; one that was it
 * already may have waited for its reply and given up; but nobody passes the setting of the pending
 * flag unseen, so in a third window there is nobody left. A window that cannot hold is not modelled
 * to its end: another one begins instead. */
#ifdef READS_AT_ONCE
#define READ atomic
#else
#define READ
#endif

#define ReadWords \
    READ { \
        do \
        :: d_step { word < WORDS -> seen[word] = w[word]; word++ } \
        :: d_step { word == WORDS -> word = 0 }; break \
        od \
    }

#define LookAtClients \
    READ { \
        do \
        :: d_step { word < CLIENTS -> vain[word] = !inside[word]; word++ } \
        :: d_step { word == CLIENTS -> word = 0; window++ }; break \
        od \
    }

#define BeginWindow \
    d_step { MARK_PENDING }; \
    ReadWords; \
    if \
    :: d_step { seen[LOCK] == 0 || OWED || PASSAGE_UNSEEN -> ForgetLooks() } \
    :: else -> LookAtClients \
    fi

#ifdef OWN_WORDS
#define NextWindow BeginWindow
#else
#define NextWindow LookAtClients
#endif

#define EndWindow \
    READ { \
        do \
        :: d_step { word < CLIENTS && (!inside[word] || vain[word]) -> word++ } \
        :: d_step { word < CLIENTS && inside[word] && !vain[word] -> word = 0; ForgetLooks() }; break \
        :: d_step { word == CLIENTS -> word = 0 }; break \
        od \
    }; \
    READ { \
        do \
        :: d_step { window > 0 && word < WORDS && w[word] == seen[word] -> word++ } \
        :: d_step { window > 0 && word < WORDS && w[word] != seen[word] -> word = 0; ForgetLooks() }; break \
        :: d_step { window == 0 || word == WORDS -> word = 0 }; break \
        od \
    }

#ifdef NO_LOOKS
#define Judge(rested) false
#else
#define Judge(rested) \
    if \
    :: window == 0 && w[LOCK] == 1 && !closed -> BeginWindow \
    :: window > 0 && ALL_IN_VAIN -> \
       EndWindow; \
       if \
       :: window == 0 \
       :: window > 0 && window < WINDOWS -> NextWindow \
       :: window == WINDOWS -> PutToRest(); goto rested \
       fi \
    :: d_step { NOBODY_INSIDE && w[LOCK] == 1 && !closed -> PutToRestAlone() }; goto rested \
    NOTHING_TO_SEE \
    fi
#endif

/* TakeMutex: polls the exchange mutex, and looks around meanwhile. A closed segment is left when the
 * mutex is not to be had. */
#define StandForMutex(rested) \
    do \
    :: SwapIn(HOST, MUTEX); \
       if \
       :: d_step { w[MUTEX] == 1 -> ForgetLooks() }; break \
       :: d_step { w[MUTEX] != 1 -> Disown(HOST, MUTEX) } \
       fi \
    :: VAIN_ATTEMPT(MUTEX) Judge(rested) \
    :: d_step { w[MUTEX] != 0 && closed -> ForgetLooks() }; goto away \
    od

/* No host works in the segment any more: SendEverybodyAway. Whoever is past both looks at the closed
 * flag reads what stands in the buffer, and nobody writes there: a reply if there is one, that the
 * host ended otherwise. The command is there for whoever is among the waiters or will be; the others
 * see the flag, and it does not matter how many of them hold a lock. */
inline SendEverybodyAway() {
    atomic { closed = true; DisownAll(HOST) };
    do
    :: true ->
#ifdef NO_ROUND
       if
       :: NOBODY_INSIDE -> break
       :: !NOBODY_INSIDE
       fi;
#endif
#ifdef LATE_TEXT
       if
       :: w[WAITERS(REPLY)] > 0 && w[COMMAND(REPLY)] == 0 -> buffer = EMPTY; text = HOST_ENDED
       :: else
       fi;
#else
       /* PutFarewell */
       if
       :: w[PENDING] != 0 -> buffer = EMPTY; text = HOST_ENDED
       :: w[PENDING] == 0
       fi;
#endif
       /* OpenEveryDoor */
       w[WAITERS(REQUEST)] = 0;
       w[COMMAND(REQUEST)] = 0;
       w[ENTER(REQUEST)] = 0;
       w[COMMAND(REPLY)] = 1;
       w[ENTER(REPLY)] = 0;
       w[MUTEX] = 0;
       w[LOCK] = 0;
       if
       :: !NOBODY_INSIDE && ANOTHER_ROUND
       :: NOBODY_INSIDE || !ANOTHER_ROUND -> break
       fi
    od
}

proctype Host() {
    byte seen[WORDS];
    byte word;
    byte other;
    byte place;
    byte request;
    {
        do
        :: StandForMutex(have);
have:
           if
           :: NEW_REQUEST -> goto read
           :: !NEW_REQUEST && closed -> ReleaseWord(HOST, MUTEX); goto away
           :: !NEW_REQUEST && !closed
           fi;
           JoinWaitersForRequest();
           /* AwaitRequest */
endIdle:
           do
           :: d_step {
                  w[COMMAND(REQUEST)] == 1 -> w[COMMAND(REQUEST)] = 0;
                  ForgetLooks()
              }
              LeaveNotified(HOST, REQUEST);
              break
           :: NO_COMMAND Judge(have)
           :: d_step { w[COMMAND(REQUEST)] == 0 && closed -> ForgetLooks() }; break
           od;
           goto served;

           /* AnswerRequest. The script runs between the next two statements. */
read:
           request = buffer;
           taken = true;
           ReleaseWord(HOST, MUTEX);
           StandForMutex(reply);
reply:
           if
           :: NEW_REQUEST -> goto read
           :: !NEW_REQUEST
           fi;
           buffer = ANSWER + request;
           text = 0;
written:
           w[PENDING] = 0;
notify:
           if
           :: SwapIn(HOST, ENTER(REPLY));
              if
              :: d_step { w[ENTER(REPLY)] == 1 -> ForgetLooks() }
              :: d_step { w[ENTER(REPLY)] != 1 -> Disown(HOST, ENTER(REPLY)) }; goto notify
              fi
           :: w[ENTER(REPLY)] != 0 ->
              /* AwaitFreeEnterLock: who goes into the condition or comes out may need the mutex. */
              ReleaseWord(HOST, MUTEX);
              do
              :: w[ENTER(REPLY)] == 0 -> break
              :: VAIN_ATTEMPT(ENTER(REPLY)) Judge(rested)
              :: d_step { w[ENTER(REPLY)] != 0 && closed -> ForgetLooks() }; goto served
              od;
              StandForMutex(again);
again:
              if
              :: NEW_REQUEST -> goto read
              :: !NEW_REQUEST -> goto written
              fi
           fi;
           /* The host waits for the next request before the client can come back with it; not in a closed
            * segment, where it may have left its place among the waiters without taking the command. */
           request = 0;
           if
           :: closed JOIN_CLOSED -> ReleaseWord(HOST, MUTEX)
           :: else -> JoinWaitersForRequest()
           fi;
           /* NotifyOneEntered */
           if
           :: w[WAITERS(REPLY)] == 0 -> ReleaseWord(HOST, ENTER(REPLY))
           :: w[WAITERS(REPLY)] > 0 ->
              do
              :: d_step {
                     w[COMMAND(REPLY)] == 0 -> w[COMMAND(REPLY)] = 1;
                     Own(ENTER(REPLY), HANDED_OVER);
                     ForgetLooks()
                 }
                 break
#ifdef HOST_OWES
              :: Judge(rested)
#endif
              od
           fi;
           goto endIdle;
rested:
           request = 0;
           goto have;
served:
           skip
        od;
away:
        SendEverybodyAway()
    } unless {
        dead[HOST] ->
        d_step { request = 0; word = 0; ForgetLooks() };
        SendEverybodyAway()
    }
}

/* Ends clients inside the segment, and the host, between any two of their steps. */
#define Kill(who) \
    d_step { left && inside[who] -> left--; dead[who] = true; inside[who] = false; past[who] = false; DisownAll(who) }

proctype Fate() {
    byte left = CRASHES;
    byte place;
end:
    do
    :: Kill(0)
    :: Kill(1)
#if CLIENTS > 2
    :: Kill(2)
#endif
#if CLIENTS > 3
    :: Kill(3)
#endif
#if HOST_CRASHES
    :: d_step { !dead[HOST] -> dead[HOST] = true; DisownAll(HOST) }
#endif
#if HOST_STOPS
    :: d_step { !closed && !dead[HOST] -> closed = true; DisownAll(HOST) }
#endif
#ifdef EVERYBODY_ENDS
    :: break
#endif
    od
}

init {
    byte n = 0;
    atomic {
        do
        :: n < WORDS -> owner[n] = NOBODY; n++
        :: else -> break
        od;
        n = 0;
        run Host();
        do
        :: n < CLIENTS -> run Client(n); n++
        :: else -> break
        od;
        n = 0;
        if
        :: CRASHES > 0 || HOST_CRASHES > 0 || HOST_STOPS > 0 -> run Fate()
        :: else
        fi
    }
}

#ifdef EVERYBODY_ENDS
#if CLIENTS == 2
ltl everybody_ends { <>((ended[0] || dead[0]) && (ended[1] || dead[1])) }
#else
ltl everybody_ends {
    <>((ended[0] || dead[0]) && (ended[1] || dead[1]) && (ended[2] || dead[2]))
}
#endif
#endif
