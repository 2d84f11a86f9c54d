/* Frame and loop tests: manual clock and tasks (Pump drives the loop); each
 * test ends with a full unload and no framework buffer left. */
#ifndef MDTLM_TEST_FRAME_PLUGIN_FIXTURE_H
#define MDTLM_TEST_FRAME_PLUGIN_FIXTURE_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "fake_framework.h"
#include "manual_host.h"
#include "plugin_fixture.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

class PluginTest : public ManualHostTest {
protected:
    static FakeFramework &Fw() { return FakeFramework::Get(); }

    /* Shape of a delivered line: label, '#' for the line number, then text. */
    static std::string L(const std::string &text) { return "[mdtlm.vraldcn.statis:#]" + text; }
    static std::vector<std::string> Lines(const std::vector<std::string> &texts)
    {
        std::vector<std::string> shapes;
        for (const std::string &text : texts) {
            shapes.push_back(L(text));
        }
        return shapes;
    }

    static void Start()
    {
        ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);
        Fw().ClearLogs();
    }
    static void Bind() { ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u); }
    static uint32_t Pump() { return manual_host::Pump(); }

    /* An event in a framework buffer, payload starting with `word`. */
    static MDTLM_EVENT_MSG *NewEvent(uint32_t type, uint32_t payloadLen, uint32_t word)
    {
        auto *event = static_cast<MDTLM_EVENT_MSG *>(MDTLM_VRALDCN_BufAlloc(8 + (payloadLen < 4 ? 4 : payloadLen)));
        event->msgType = type;
        event->msgLen = payloadLen;
        std::memcpy(event->payload, &word, 4);
        return event;
    }
};

/* A task node linked straight into a sensor's list for the scope's life. */
class ScopedTask {
public:
    explicit ScopedTask(uint32_t sensorType)
        : node_(static_cast<MDTLM_TASK_NODE *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_TASK_NODE))))
    {
        std::memset(node_, 0, sizeof(*node_));
        node_->data.sensorType = sensorType;
        MDTLM_LIST_LINK *head = g_vralDcnTlmTaskListMap[sensorType - 1].taskList;
        node_->link = {head->next, head};
        head->next->prev = &node_->link;
        head->next = &node_->link;
    }
    ~ScopedTask()
    {
        node_->link.prev->next = node_->link.next;
        node_->link.next->prev = node_->link.prev;
        void *raw = node_;
        MDTLM_VRALDCN_BufFree(&raw);
    }

    MDTLM_TASK_NODE *node_;
};

#endif /* MDTLM_TEST_FRAME_PLUGIN_FIXTURE_H */
